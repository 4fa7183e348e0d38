#version 430 core
// A segment as an edge.

layout(lines) in;
layout(line_strip, max_vertices=2) out;

//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/EmitGlueVertex.glsl"

// The edge goes on from glue.coords to here, and how far along it a vertex lies.
flat out vec3 edge_end;
out float edge_share;

void main()
{
    for (int i = 0; i < 2; ++i) {
        edge_end = glue_in[1].real_coords;
        edge_share = float(i);
        emitVertex(gl_in[i].gl_Position, edge_flag, glue_in[0].real_coords, glue_in[i].real_coords);
    }
    EndPrimitive();
}
