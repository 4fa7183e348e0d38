#version 430 core
// Marks for tests, which count their pixels: the whole square of the point.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

void main()
{
    writeItem(item.color, item.id, item.index, item.place, vec4(0.0));
}
