#version 430 core
// Gives each triangle of a sphere one normal, so that its facets show.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dLight/LightFrame.glsl"

layout(triangles) in;
layout(triangle_strip, max_vertices=3) out;

in Item
{
    ITEM_FIELDS
}
item_in[];

in Corner
{
    vec3 point; // model coordinates
    vec3 light_position;
    vec2 texture_coords;
}
corner[];

out Item
{
    ITEM_FIELDS
}
item;

out vec3 light_normal;
out vec3 light_position;
out vec2 texture_coords;

uniform mat3 normalMatrix = mat3(1.0);

// The normal in model coordinates. A triangle with two corners in one point, as there are at the poles, has none: zero.
vec3 facetNormal(vec3 p0, vec3 p1, vec3 p2)
{
    vec3 normal = cross(p1 - p0, p2 - p0);
    float size = length(normal);
    // the product of two equal edges need not be exactly zero where a driver fuses multiplication and addition
    return p1 != p2 && size > 0.0 ? normal / size : vec3(0.0);
}

void main()
{
    vec3 normal = facetNormal(corner[0].point, corner[1].point, corner[2].point);
    for (int i = 0; i < 3; ++i) {
        gl_Position = gl_in[i].gl_Position;
        light_normal = lightFrame() * (normalMatrix * normal);
        light_position = corner[i].light_position;
        texture_coords = corner[i].texture_coords;
        COPY_ITEM(item_in[i])
        EmitVertex();
    }
    EndPrimitive();
}
