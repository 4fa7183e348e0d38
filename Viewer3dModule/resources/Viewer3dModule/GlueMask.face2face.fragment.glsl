#version 430 core
// Glue masks of faces: their planes, or of raw coordinates: the surface at the pixel.
//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dFences/Fence.glsl"

in Glue
{
    GLUE_FIELDS
}
glue;

in vec3 surface_coords;

GLUE_OUTPUTS

void main()
{
    if (!isLayerWanted(glue.mask, glue.priority_layer) || isOutsideFence(glue.place)) discard;
    vec3 written = glue.priority_layer == face_flag ? glue.coords : surface_coords;
    WRITE_GLUE(written, glue.priority_layer)
}
