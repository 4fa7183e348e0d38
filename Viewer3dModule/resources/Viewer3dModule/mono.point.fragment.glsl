#version 430 core
// Round points of one colour: the item's, or with RX_USE_PER_VERTEX_COLOR that of the vertices. A pixel is
// drawn when its centre lies in the disc, and not smoothed, so that the pictures of all modes cover the same
// pixels.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

// Smaller points stay squares: a disc that is less than the diagonal of a pixel across may lie between the
// centres of all pixels, and would be drawn or not as the camera moves.
const float least_round_size = 1.5; // pixels

bool isInPoint()
{
    vec2 from_centre = 2.0 * gl_PointCoord - 1.0;
    float pixel = abs(dFdx(gl_PointCoord.x)); // in shares of the point's size
    return dot(from_centre, from_centre) <= 1.0 || pixel * least_round_size > 1.0;
}

void main()
{
    if (!isInPoint()) discard;
    writeItem(PLAIN_COLOR, item.id, item.index, item.place, bytesOf(~uint(point_item_flag)));
}
