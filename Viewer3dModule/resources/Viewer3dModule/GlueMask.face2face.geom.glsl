#version 430 core
// A face with the plane that it lies in. An item whose mask leaves faces out gives the coordinates of its surface.

layout(triangles) in;
layout(triangle_strip, max_vertices=3) out;

//#include "shader:Viewer3dModule/GluePriority.glsl"
//#include "shader:Viewer3dModule/EmitGlueVertex.glsl"

out vec3 surface_coords;

// A plane through the origin has no equation that ends in + 1: planes that pass nearer than this are taken to pass at
// this distance, in scene units. That is far below the resolution of the coordinates, and leaves finite numbers whose
// squares are finite as well.
const double least_distance = 1.0e-15lf;

void main()
{
    // Doubles: the differences and products of floats lose nothing in them, so that thin faces and planes near the
    // origin come out as exactly as their corners are given.
    dvec3 corner = dvec3(glue_in[0].real_coords);
    dvec3 normal = cross(dvec3(glue_in[1].real_coords) - corner, dvec3(glue_in[2].real_coords) - corner);
    double doubled_area = length(normal);
    if (!(doubled_area > 0.0lf)) return; // covers no pixel and has no plane

    double origin_distance = -dot(normal, corner) / doubled_area;
    if (abs(origin_distance) < least_distance) origin_distance = least_distance;
    vec3 plane = vec3(normal / doubled_area / origin_distance);

    int layer = isLayerWanted(glue_in[0].mask, face_flag) ? face_flag : raw_coords_flag;
    for (int i = 0; i < 3; ++i) {
        surface_coords = glue_in[i].real_coords;
        emitVertex(gl_in[i].gl_Position, layer, plane, glue_in[i].real_coords);
    }
    EndPrimitive();
}
