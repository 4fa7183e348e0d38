#version 430 core
// Points of an item. Its mask tells what they are: point items, else nodes, else points of a cloud.

layout(points) in;
layout(points, max_vertices=1) out;

//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/EmitGlueVertex.glsl"

int layerOf(uint mask)
{
    if (isLayerWanted(mask, point_item_flag)) return point_item_flag;
    return isLayerWanted(mask, node_flag) ? node_flag : cloud_point_flag;
}

void main()
{
    emitPoint(gl_in[0].gl_Position, layerOf(glue_in[0].mask), glue_in[0].real_coords);
}
