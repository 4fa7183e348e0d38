#version 430 core
// Glue masks of edges: the point of the edge where the line is sampled for the pixel. A driver takes the nearest to the
// pixel's centre or the one in its row or column, which is less than half a pixel from there. Beyond the ends, where a
// line may be sampled too, it is the end.
//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dFences/Fence.glsl"

in Glue
{
    GLUE_FIELDS
}
glue;

flat in vec3 edge_end;
in float edge_share;

GLUE_OUTPUTS

void main()
{
    if (!isLayerWanted(glue.mask, glue.priority_layer) || isOutsideFence(glue.place)) discard;
    vec3 place = mix(glue.coords, edge_end, clamp(edge_share, 0.0, 1.0));
    WRITE_GLUE(place, glue.priority_layer)
}
