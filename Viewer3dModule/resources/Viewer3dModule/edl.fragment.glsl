#version 430 core
// Eye-dome lighting, a pass over a finished picture: a pixel is darkened by those about it that lie outside a
// sphere round its point in the scene, on the camera's side of it or on the far side. The picture and its
// depth are of the same size. Parts of a picture that are drawn on their own need dome_radius pixels more on
// each side.

in vec2 texture_coords;

layout(location = 0) out vec4 color;

// What darkens a pixel: nothing, what lies further than it, what lies nearer.
const int not_used_edl_shading = 0;
const int positive_edl_shading = 1;
const int negative_edl_shading = 2;

const float foreground_level = 0.001; // below it the depth range of items in the foreground
const int dome_radius = 5;            // pixels

uniform sampler2D rgb_texture;
uniform sampler2D depth_texture;
// Normalised device coordinates to the scene, or to another frame of the same scale: distances are measured
// there, and the neighbourhood is a disc about its z axis.
uniform mat4 mvp_inv = mat4(1.0);
uniform int edl_shading_type = negative_edl_shading;

float depthAt(ivec2 texel)
{
    return texelFetch(depth_texture, texel, 0).r;
}

// Both depth ranges hold the whole frustum.
float frustumZ(float depth)
{
    float z = depth >= foreground_level ? (depth - foreground_level) / (1.0 - foreground_level)
                                        : depth / foreground_level;
    return 2.0 * z - 1.0;
}

vec3 getFrustumPoint(ivec2 texel)
{
    vec2 p = (vec2(texel) + 0.5) / vec2(textureSize(depth_texture, 0));
    return vec3(2.0 * p - 1.0, frustumZ(depthAt(texel)));
}

// The point in the scene, and in w what its coordinates were divided by.
vec4 mapToScene(vec3 frustum_point)
{
    vec4 mapped = mvp_inv * vec4(frustum_point, 1.0);
    return vec4(mapped.xyz / mapped.w, mapped.w);
}

// The way from a point in the scene to another, given mvp_inv times their difference in the frustum.
// Positions would have to be subtracted, and have no digits left for what a pixel is wide in a near view of a
// large scene.
vec3 wayInScene(vec4 from, vec4 difference)
{
    return (difference.xyz - from.xyz * difference.w) / (from.w + difference.w);
}

bool isOnShadingSide(float from_z, float to_z)
{
    if (edl_shading_type == positive_edl_shading) return from_z < to_z;
    return edl_shading_type == negative_edl_shading && from_z > to_z;
}

// The share of the neighbourhood that leaves the pixel lit. The pixel is its own neighbour, so there is
// always one.
float litShare(ivec2 centre, ivec2 size)
{
    vec3 frustum_point = getFrustumPoint(centre);
    vec4 scene_point = mapToScene(frustum_point);
    vec4 column = mvp_inv[0] * (2.0 / float(size.x));
    vec4 row = mvp_inv[1] * (2.0 / float(size.y));
    float radius = length(wayInScene(scene_point, row)) * (float(dome_radius) + 0.5);

    ivec2 first = max(centre - dome_radius, ivec2(0));
    ivec2 last = min(centre + dome_radius, size - 1);
    int count = 0;
    int lit = 0;
    for (int y = first.y; y <= last.y; ++y) {
        vec4 difference_in_y = row * float(y - centre.y);
        for (int x = first.x; x <= last.x; ++x) {
            vec4 difference = difference_in_y + column * float(x - centre.x);
            if (length(wayInScene(scene_point, difference).xy) > radius) continue;
            ++count;
            float z = frustumZ(depthAt(ivec2(x, y)));
            bool is_shading = isOnShadingSide(frustum_point.z, z);
            if (is_shading) {
                vec4 difference_in_depth = mvp_inv[2] * (z - frustum_point.z);
                is_shading = length(wayInScene(scene_point, difference + difference_in_depth)) > radius;
            }
            if (!is_shading) ++lit;
        }
    }
    return float(lit) / float(count);
}

void main()
{
    ivec2 size = textureSize(depth_texture, 0);
    ivec2 centre = clamp(ivec2(texture_coords * vec2(size)), ivec2(0), size - 1);
    color = texelFetch(rgb_texture, centre, 0);
    gl_FragDepth = depthAt(centre);
    if (edl_shading_type != not_used_edl_shading) color.rgb *= litShare(centre, size);
}
