#version 430 core
// One vertex a glyph of a label. The label's item comes with each of its glyphs, so that the glyphs of all
// items lie in one buffer and are drawn in any order.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(location = 0) in vec3 point_coords;  // where the label is anchored
layout(location = 1) in float label_height; // pixels, see PerGlyphCaption.geom
layout(location = 2) in vec2 place;         // of the glyph's lower left corner from the anchor, y up
layout(location = 3) in int label_item;     // the item's index among those that the drawer draws
layout(location = 5) in int item_flags;
layout(location = 6) in uvec2 item_id;

out float glyph_height;
out vec2 glyph_place;

uniform mat4 projection = mat4(1.0);
uniform mat4 view = mat4(1.0);
uniform mat4 model = mat4(1.0);
ITEM_UNIFORMS

invariant gl_Position; // see common.vertex

out Item
{
    ITEM_FIELDS
}
item;

void main()
{
    vec4 world = model * vec4(point_coords, 1.0);
    gl_Position = projection * (view * world);
    glyph_height = label_height;
    glyph_place = place;
    FILL_ITEM(item_flags, item_id, label_item)
    item.place = fencePlace(world);
}
