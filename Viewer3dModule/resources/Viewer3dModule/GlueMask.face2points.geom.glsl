#version 430 core
// The corners of a face as points.

layout(triangles) in;
layout(points, max_vertices=3) out;

//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/EmitGlueVertex.glsl"

void main()
{
    for (int i = 0; i < 3; ++i)
        emitPoint(gl_in[i].gl_Position, face_node_flag, glue_in[i].real_coords);
}
