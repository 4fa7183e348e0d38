#version 430 core
// The edges of a face, each a line of its own.

layout(triangles) in;
layout(line_strip, max_vertices=6) out;

//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/EmitGlueVertex.glsl"

// The edge goes on from glue.coords to here, and how far along it a vertex lies.
flat out vec3 edge_end;
out float edge_share;

void main()
{
    for (int i = 0; i < 3; ++i) {
        int next = i == 2 ? 0 : i + 1;
        edge_end = glue_in[next].real_coords;
        edge_share = 0.0;
        emitVertex(gl_in[i].gl_Position, face_edge_flag, glue_in[i].real_coords, glue_in[i].real_coords);
        edge_end = glue_in[next].real_coords;
        edge_share = 1.0;
        emitVertex(gl_in[next].gl_Position, face_edge_flag, glue_in[i].real_coords, glue_in[next].real_coords);
        EndPrimitive();
    }
}
