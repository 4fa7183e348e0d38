#version 430 core
// A segment as points: its two nodes and its middle. Inner nodes of a strip come from both of their segments, at the
// same place with the same coordinates.

layout(lines) in;
layout(points, max_vertices=3) out;

//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/EmitGlueVertex.glsl"

void main()
{
    for (int i = 0; i < 2; ++i)
        emitPoint(gl_in[i].gl_Position, node_flag, glue_in[i].real_coords);
    emitPoint(0.5 * (gl_in[0].gl_Position + gl_in[1].gl_Position), mid_node_flag,
              0.5 * (glue_in[0].real_coords + glue_in[1].real_coords));
}
