#version 430 core
// The single point that a sphere or a cylinder is made of. It is handed on as it is: the stages after this one build
// the surface in the coordinates of the model.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(location = 0) in vec3 point_coords;

uniform int item_flags = item_normal_flag;
uniform uvec2 item_id = uvec2(0u, 0u);
uniform bool uWireMode = false; // the mesh of the surface shows the item's plain colour
ITEM_UNIFORMS

out Item
{
    ITEM_FIELDS
}
item;

void main()
{
    gl_Position = vec4(point_coords, 1.0);
    FILL_ITEM(item_flags, item_id, 0)
    item.place = vec4(0.0); // that of the surface is known where it is made
    if (uWireMode) {
        item.color_mode = item_color_mode;
        item.is_lit = 0;
    }
}
