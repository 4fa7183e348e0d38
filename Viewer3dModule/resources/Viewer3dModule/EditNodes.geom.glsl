#version 430 core
// A segment of a polyline under edit becomes markers of pen_width pixels: on its two nodes, and between them one that
// stands for a node to be added, each as far as its centre is in view. Markers are numbered along a strip: node k has
// 2 k, the one after it 2 k + 1.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(lines) in;
layout(points, max_vertices=3) out;

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

flat out int marker_idx; // the marker's number in the whole polyline, or among all polylines

uniform float pen_width = 1.0;              // pixels
uniform mat4 viewport = mat4(1.0);          // normalised device coordinates to pixels
uniform bool is_show_adding_markers = true;
uniform int first_marker_idx = 0; // the number of this draw call's first node

// How long a segment must be to have a marker between its nodes, in pen widths.
const float least_length = 4.0;
// A segment that changes less than this from end to end runs along the side of the view.
const float least_slope = 1e-6;

// What shows of the segment, in normalised device coordinates, and its places, divided by w as the coordinates are:
// so both change evenly along it.
struct Part
{
    vec3 from;
    vec3 to;
    vec4 place_from;
    vec4 place_to;
    bool is_from_clipped;
    bool is_to_clipped;
};

bool areBeyondOneSide(vec4 clip0, vec4 clip1)
{
    for (int axis = 0; axis < 3; ++axis) {
        if (clip0[axis] < -clip0.w && clip1[axis] < -clip1.w) return true;
        if (clip0[axis] > clip0.w && clip1[axis] > clip1.w) return true;
    }
    return false;
}

bool isBehind(vec4 clip)
{
    return clip.z < -clip.w;
}

// Where a segment crosses the near plane z = -1. Found before the division by w, which loses the digits of an
// end that lies close to the camera's own plane.
vec3 nearCrossing(vec4 clip0, vec4 clip1, out vec4 place)
{
    float depth0 = clip0.z + clip0.w;
    float depth1 = clip1.z + clip1.w;
    float share = depth0 / (depth0 - depth1);
    vec4 crossing = mix(clip0, clip1, share);
    place = mix(item_in[0].place, item_in[1].place, share) / crossing.w;
    return vec3(crossing.xy / crossing.w, -1.0);
}

// Cuts off what lies beyond one side of the view, a plane at -1 or 1 of an axis.
void clipAt(inout Part part, int axis, float side)
{
    float start = part.from[axis];
    float slope = part.to[axis] - start;
    if (abs(slope) < least_slope) return;
    float t = (side - start) / slope;
    if (!(t > 0.0 && t < 1.0)) return;
    vec3 crossing = mix(part.from, part.to, t);
    crossing[axis] = side;
    vec4 place = mix(part.place_from, part.place_to, t);
    if (start * side > 1.0) {
        part.from = crossing;
        part.place_from = place;
        part.is_from_clipped = true;
    } else {
        part.to = crossing;
        part.place_to = place;
        part.is_to_clipped = true;
    }
}

void emitMarker(vec4 position, vec4 place, int primitive_id)
{
    if (!isInView(position)) return;
    gl_Position = position;
    gl_PointSize = pen_width;
    gl_PrimitiveID = primitive_id;
    marker_idx = first_marker_idx + primitive_id;
    COPY_ITEM(item_in[0])
    item.place = place;
    EmitVertex();
    EndPrimitive();
}

// The marker stands in the middle of what shows of the segment. Between nodes that are close to each other on
// screen there is no room for it; where neither node shows there is.
void emitAddingMarker(vec4 clip0, vec4 clip1, int primitive_id)
{
    Part part = Part(clip0.xyz / clip0.w, clip1.xyz / clip1.w, item_in[0].place / clip0.w, item_in[1].place / clip1.w,
                     false, false);
    if (isBehind(clip0))
        part.from = nearCrossing(clip0, clip1, part.place_from);
    else if (isBehind(clip1))
        part.to = nearCrossing(clip0, clip1, part.place_to);

    for (int axis = 0; axis < 3; ++axis) {
        clipAt(part, axis, 1.0);
        clipAt(part, axis, -1.0);
    }

    vec2 pixels = (viewport * vec4(part.to - part.from, 0.0)).xy;
    bool is_crossing = part.is_from_clipped && part.is_to_clipped;
    if (!is_crossing && length(pixels) < least_length * pen_width) return;
    emitMarker(vec4(0.5 * (part.from + part.to), 1.0), 0.5 * (part.place_from + part.place_to), primitive_id);
}

void main()
{
    vec4 clip0 = gl_in[0].gl_Position;
    vec4 clip1 = gl_in[1].gl_Position;
    if (areBeyondOneSide(clip0, clip1)) return;
    int first = 2 * gl_PrimitiveIDIn;
    emitMarker(clip0, item_in[0].place, first);
    emitMarker(clip1, item_in[1].place, first + 2);
    bool is_shown = is_show_adding_markers && clip0.w != 0.0 && clip1.w != 0.0;
    if (is_shown) emitAddingMarker(clip0, clip1, first + 1);
}
