// The fence of the view, for fragment stages: what lies outside of it is no part of any picture. The same verdict as
// that of the fences' own classes, in floats. Programs have a fence with one of two defines only, see FencePlace.glsl.
// Who draws sets the uniforms and the block before each pass.

#ifdef RX_USE_SPHERE_FENCE

uniform vec3 sphere_fence_center = vec3(0.0); // scene coordinates
uniform float sphere_fence_radius = 0.0;      // below 0 nothing lies inside
uniform int fence_to_use = 0;                 // 2: the sphere
const int sphere_fence = 2;

// While somebody works on the fence: ordinary passes show in grey what lies outside.
uniform bool fence_gray_preview = false;

bool isInFence(vec4 place)
{
    if (fence_to_use != sphere_fence) return true;
    return distance(place.xyz / place.w, sphere_fence_center) <= sphere_fence_radius;
}

#else
#ifdef RX_USE_SWEPT_FENCE

uniform int fence_to_use = 0; // one of these
const int frustum_fence = 1;
const int prism_fence = 3;

uniform bool fence_gray_preview = false; // as above

// In the plane of the polygon, low corner and high corner. What is in the first lies inside, what is outside of the
// second does not: only what is between them is held against the edges.
uniform vec4 fence_inner_box = vec4(1.0, 1.0, -1.0, -1.0);
uniform vec4 fence_outer_box = vec4(1.0, 1.0, -1.0, -1.0);
// Near and far, and the number of points, as the block has them: drivers read uniforms faster.
uniform vec2 fence_ends = vec2(0.0);
uniform int fence_count = 0;

// A polygon swept along z: for a prism in parallel, for a frustum along lines of sight from the origin. Places are those
// of the fence's own frame, in a frustum with x and y divided by fence_tan_half_fovy: its polygon lies at depth 1. There
// is no end where fence_far is not above fence_near.
layout(std430, binding = 10) readonly buffer prism_fence_buffer
{
    vec4 fence_box_min;
    vec4 fence_box_max;
    mat4 scene_to_fence;
    float fence_near;
    float fence_far;
    float fence_tan_half_fovy;
    uint fence_point_count;
    vec2 fence_points[]; // closed: the last is the first
};

bool isInFenceBox(vec2 point, vec4 box)
{
    return all(greaterThanEqual(point, box.xy)) && all(lessThanEqual(point, box.zw));
}

// The even-odd rule: whether a ray towards +x crosses an odd number of edges, that is whether the point lies strictly
// left of so many of those that have one end above the point and one that is not.
bool isInFencePolygon(vec2 point)
{
    bool is_inside = isInFenceBox(point, fence_inner_box);
    // where the boxes tell there are no edges to look at
    int count = is_inside || !isInFenceBox(point, fence_outer_box) ? 0 : fence_count;
    vec2 previous = vec2(0.0); // the first way is from the point itself, to the left of which it does not lie
    for (int i = 0; i < count; ++i) {
        vec2 current = fence_points[i] - point;
        bool rises = current.y > 0.0;
        // above 0 where the point lies left of the edge as it rises
        float side = previous.x * current.y - current.x * previous.y;
        if (rises != (previous.y > 0.0) && (rises ? side > 0.0 : side < 0.0)) is_inside = !is_inside;
        previous = current;
    }
    return is_inside;
}

bool isInFence(vec4 place)
{
    bool is_prism = fence_to_use == prism_fence;
    if (!is_prism && fence_to_use != frustum_fence) return true;
    bool is_between = place.z >= fence_ends.x * place.w &&
                      (fence_ends.y <= fence_ends.x || place.z <= fence_ends.y * place.w);
    // nothing is seen at the eye itself, where depth is 0
    float depth = is_prism ? place.w : place.z;
    return is_between && depth > 0.0 && isInFencePolygon(place.xy / depth);
}

#else

const bool fence_gray_preview = false;

bool isInFence(vec4 place)
{
    return true;
}

#endif
#endif

// Whether the fence leaves out what lies at this place, see FencePlace.glsl.
bool isOutsideFence(vec4 place)
{
    return !isInFence(place);
}

// What is outside, in the preview: a grey that is as light or dark as the colour, but less so.
vec4 fencePreviewColor(vec4 shown_color)
{
    float brightness = dot(shown_color.rgb, vec3(0.299, 0.587, 0.114));
    return vec4(vec3(0.25 + 0.5 * brightness), shown_color.a);
}
