#version 430 core
// Wraps a square around the unit sphere about the patch's point: u runs around the z axis from x towards y, v from the
// lower pole to the upper one. Seen from outside the triangles are clockwise.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dLight/LightFrame.glsl"

layout(quads, equal_spacing, cw) in;

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

// For the fragment stage, when no geometry stage stands between: the sphere's own normals.
out vec3 light_normal;
out vec3 light_position;
out vec2 texture_coords;

// For sphereCube.geom, whose own outputs bear the names above.
out Corner
{
    vec3 point; // model coordinates
    vec3 light_position;
    vec2 texture_coords;
}
corner;

uniform mat4 projection = mat4(1.0);
uniform mat4 view = mat4(1.0);
uniform mat4 model = mat4(1.0);
uniform mat3 normalMatrix = mat3(1.0);
// The vertical texture coordinate is uTextureK * v + uTextureB, from 0 to 1 at most.
uniform float uTextureK = -1.0;
uniform float uTextureB = 1.0;

const float pi = 3.14159265358979;

vec3 onUnitSphere(vec2 uv)
{
    float latitude = pi * (uv.y - 0.5);
    float longitude = 2.0 * pi * uv.x;
    if (longitude > pi) longitude -= 2.0 * pi; // where u = 1 the surface meets its beginning without a gap
    // a pole is one point for all of its triangles, which the rounded cosine would not give
    float radius = uv.y == 0.0 || uv.y == 1.0 ? 0.0 : cos(latitude);
    return vec3(radius * cos(longitude), radius * sin(longitude), sin(latitude));
}

void main()
{
    vec3 normal = onUnitSphere(gl_TessCoord.xy);
    vec3 point = gl_in[0].gl_Position.xyz + normal;
    vec4 world = model * vec4(point, 1.0);
    vec4 eye = view * world;
    gl_Position = projection * eye;

    mat3 frame = lightFrame();
    light_normal = frame * (normalMatrix * normal);
    light_position = frame * eye.xyz;
    texture_coords = vec2(gl_TessCoord.x, clamp(uTextureK * gl_TessCoord.y + uTextureB, 0.0, 1.0));

    corner.point = point;
    corner.light_position = light_position;
    corner.texture_coords = texture_coords;
    COPY_ITEM(item_in[0])
    item.place = fencePlace(world);
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    item.vertex_color.r = world.z;
#endif
#endif
}
