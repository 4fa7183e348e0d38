#version 430 core
// Markers of nodes under edit: squares in the item's colour. Those that stand for a node to be added have odd
// numbers and a core that stands out against the colour; they are no part of the geometry, so the glue mask
// has none of them. What one can select is a single marker: in the selection buffer it has its own bit, that
// of its number, and the selection mask holds the complement of the number beside the item's id (complement,
// so that 0 says "no marker").
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

flat in int marker_idx;

const float core_share = 0.5; // of the marker's width
const float contrast = 0.75;  // how far the core goes towards white or black
const vec3 brightness = vec3(0.299, 0.587, 0.114);

vec3 coreColor(vec3 own_color)
{
    float opposite = dot(own_color, brightness) > 0.5 ? 0.0 : 1.0;
    return mix(own_color, vec3(opposite), contrast);
}

bool isInCore()
{
    vec2 from_centre = abs(2.0 * gl_PointCoord - 1.0);
    return max(from_centre.x, from_centre.y) < core_share;
}

void main()
{
    bool is_adding = (gl_PrimitiveID & 1) != 0;
    if (is_adding && draw_mode == glue_mask_draw) discard;
    vec4 shown = item.color;
    if (is_adding && isInCore()) shown.rgb = coreColor(shown.rgb);
    writeItem(shown, item.id, item.index + marker_idx, item.place, bytesOf(~uint(node_flag)));
    if (draw_mode == selection_mask_draw) coords_w = bytesOf(~uint(marker_idx));
}
