#version 430 core
// One colour: the item's, or with RX_USE_PER_VERTEX_COLOR that of the vertices.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

void main()
{
#ifdef RX_USE_PER_VERTEX_COLOR
    vec4 shown = colorFromFlags(item.flags, item.vertex_color, item.color);
#else
    vec4 shown = item.color;
#endif
    write_item(shown, item.id, item.index, bytes_of(~uint(point_item_flag)));
}
