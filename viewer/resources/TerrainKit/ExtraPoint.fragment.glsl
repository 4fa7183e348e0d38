#version 430 core
// Marks: round points of their item's colour. A pixel belongs to a mark when its centre lies in the disc, whatever the
// pass, so that a mark is selected where it is seen.
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
    vec2 from_centre = gl_PointCoord - 0.5;
    if (dot(from_centre, from_centre) > 0.25) discard;
    writeItem(PLAIN_COLOR, item.id, item.index, item.place, bytesOf(~uint(point_item_flag)));
}
