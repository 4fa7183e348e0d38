#version 430 core
// One colour: the item's, or with RX_USE_PER_VERTEX_COLOR that of the vertices, or with RX_USE_ELEVATION_COLOR besides
// that of the height, as transparent as the item and its vertices are. With RX_VISIBLE_ITEMS_ONLY see
// SelectionMode.glsl.
#if defined(RX_VISIBLE_ITEMS_ONLY) && !defined(RX_USE_ELEVATION_COLOR)
#define ALL_IS_VISIBLE
#endif
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

#ifdef RX_USE_ELEVATION_COLOR
//#include "shader:Viewer3dModule/gradient.fragment.glsl"
#endif

void main()
{
    vec4 shown = PLAIN_COLOR;
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    vec4 own_color = elevColor(item.vertex_color.r) * vec4(1.0, 1.0, 1.0, item.vertex_color.a * item.color.a);
    shown = colorFromFlags(item.flags, own_color, item.color);
#endif
#endif
    writeItem(shown, item.id, item.index, item.place, bytesOf(~uint(point_item_flag)));
}
