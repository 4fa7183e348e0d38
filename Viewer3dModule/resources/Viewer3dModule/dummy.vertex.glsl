#version 430 core
// Takes points to scene coordinates and no further: for geometry stages that build their own surfaces along lines, and
// alone for the capture of an item's transformed vertices.
//#include "shader:Viewer3dModule/DrawModes.glsl"

#ifdef RX_USE_ADJACENCY_EMULATION
// Lines with adjacency out of a plain list of points: one instance a segment, four vertices an instance. The four
// points of a segment come from one buffer as attributes 0 to 3, each starting one point further on, and advance by one
// point an instance. The list holds its first and its last point twice.
layout(location = 0) in vec3 point_coords[4];
#else
layout(location = 0) in vec3 point_coords;
#endif

uniform mat4 model = mat4(1.0);
uniform int item_flags = item_normal_flag;
uniform uvec2 item_id = uvec2(0u, 0u);
uniform vec4 item_color;
uniform vec4 selection_color;

flat out int path_index; // the point's place in the buffer it comes from

out Item
{
    ITEM_FIELDS
}
item;

void main()
{
#ifdef RX_USE_ADJACENCY_EMULATION
    int corner = gl_VertexID % 4;
    gl_Position = model * vec4(point_coords[corner], 1.0);
    path_index = gl_InstanceID + corner;
#else
    gl_Position = model * vec4(point_coords, 1.0);
    path_index = gl_VertexID;
#endif
    item.color = colorFromFlags(item_flags, item_color, selection_color);
    item.id = item_id;
    item.flags = item_flags;
    item.index = 0;
}
