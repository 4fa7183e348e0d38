#version 430 core
// The side of a cylinder of radius 1 around the z axis, from z = -1 to z = 1. Where it stands and how large it is, the
// model matrix tells; the point only starts it.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dLight/LightFrame.glsl"

// The surface is one strip of 144 vertices. With 22 components each they are more than the 1024 that every driver
// offers to one invocation (46 vertices, or 25 where each output is counted as four components). So nine invocations
// take four tiles each; with the two vertices that lead over to the next tile, their strips together have exactly the
// triangles of the one strip, in its order.
layout(points, invocations=9) in;
layout(triangle_strip, max_vertices=18) out;

const int nTiles = 36;
const int tiles_per_invocation = 4;

in Item
{
    ITEM_FIELDS
}
item_in[];

out Item
{
    ITEM_FIELDS
}
item;

out vec3 light_normal;
out vec3 light_position;
out vec2 texture_coords;

uniform mat4 projection = mat4(1.0);
uniform mat4 view = mat4(1.0);
uniform mat4 model = mat4(1.0);
uniform mat3 normalMatrix = mat3(1.0);

// Emits the vertex of rim point i, 0 to nTiles, on this level, -1 or 1.
void emitRimPoint(int i, float z)
{
    float angle = 2.0 * 3.14159265358979 * float(i % nTiles) / float(nTiles); // the last point is the first one
    vec2 rim = vec2(sin(angle), cos(angle));
    vec4 world = model * vec4(rim, z, 1.0);
    vec4 eye = view * world;
    eye /= eye.w;
    gl_Position = projection * eye;
    mat3 frame = lightFrame();
    light_normal = frame * (normalMatrix * vec3(rim, 0.0));
    light_position = frame * eye.xyz;
    texture_coords = vec2(float(i) / float(nTiles), z < 0.0 ? 1.0 : 0.0);
    COPY_ITEM(item_in[0])
    item.place = fencePlace(world);
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    item.vertex_color.r = world.z;
#endif
#endif
    EmitVertex();
}

void main()
{
    int first = gl_InvocationID * tiles_per_invocation;
    int end = first + tiles_per_invocation;
    for (int i = first; i < end; ++i) {
        emitRimPoint(i, -1.0);
        emitRimPoint(i + 1, -1.0);
        emitRimPoint(i, 1.0);
        emitRimPoint(i + 1, 1.0);
    }
    if (end < nTiles) {
        emitRimPoint(end, -1.0);
        emitRimPoint(end + 1, -1.0);
    }
    EndPrimitive();
}
