#version 430 core
// Glue masks of nodes and points, and of any layer that has the same values over a whole primitive, faces included.
// Edges are drawn by GlueMask.line2line.fragment: what comes here of them is dropped.
//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dFences/Fence.glsl"

in Glue
{
    GLUE_FIELDS
}
glue;

GLUE_OUTPUTS

void main()
{
    int layer = glue.priority_layer;
    if (!isLayerWanted(glue.mask, layer) || layer == edge_flag || layer == face_edge_flag) discard;
    if (isOutsideFence(glue.place)) discard;
    WRITE_GLUE(glue.coords, layer)
}
