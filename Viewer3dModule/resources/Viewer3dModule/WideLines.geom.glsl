#version 430 core
// A segment becomes a hexagon of pen_width pixels across, with pointed caps, whatever the distance.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(lines) in;
layout(triangle_strip, max_vertices=6) out;

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

uniform float pen_width = 1.0;              // pixels
uniform mat4 viewport = mat4(1.0);          // normalised device coordinates to pixels
uniform mat4 viewport_inverted = mat4(1.0); // and back

bool isBehind(vec4 clip)
{
    return clip.w < 0.0 || clip.z < -clip.w;
}

// Where the segment crosses the near plane z = -1. Both ends are divided by w, so that the line through them is the
// one on screen also when an end lies behind the camera. The crossing lies in the plane exactly: half a step before it
// the whole cap at this end would be clipped away.
vec4 nearCrossing(vec4 visible, vec4 hidden)
{
    vec4 v = normalize(hidden - visible);
    vec4 crossing = visible - v * (dot(visible, vec4(0.0, 0.0, 1.0, 1.0)) / dot(v.xyz, vec3(0.0, 0.0, 1.0)));
    return vec4(crossing.xy, -1.0, 1.0);
}

// The share of the segment that lies in front of the crossing, counted from the first end: where the colours of the
// vertices are to be mixed.
float nearShare(vec4 clip0, vec4 clip1)
{
    float depth0 = clip0.z + clip0.w;
    return depth0 / (depth0 - (clip1.z + clip1.w));
}

// The place of an end at this share of the segment. Divided by w as the corners' positions are, so that between the
// ends each pixel has the place on the axis that is seen there.
vec4 placeAt(float share, vec4 from, vec4 to, float w_from, float w_to)
{
    return mix(from, to, share) / mix(w_from, w_to, share);
}

// A corner around an end in pixels, which lies at this share of the segment.
void emitCorner(vec4 end, vec4 place, float share, vec2 shift)
{
    gl_Position = viewport_inverted * (end + vec4(shift, 0.0, 0.0));
    COPY_ITEM(item_in[0])
    item.place = place;
#ifdef RX_USE_PER_VERTEX_COLOR
    item.vertex_color = mix(item_in[0].vertex_color, item_in[1].vertex_color, share);
#endif
    EmitVertex();
}

void main()
{
    vec4 clip0 = gl_in[0].gl_Position;
    vec4 clip1 = gl_in[1].gl_Position;
    vec4 from = item_in[clip0.w == 0.0 ? 1 : 0].place;
    vec4 to = item_in[clip1.w == 0.0 ? 0 : 1].place;
    if (clip0.w == 0.0) clip0 = clip1;
    if (clip1.w == 0.0) clip1 = clip0;
    bool behind0 = isBehind(clip0);
    bool behind1 = isBehind(clip1);
    if ((behind0 && behind1) || clip0.w == 0.0) return;

    vec4 ndc0 = clip0 / clip0.w;
    vec4 ndc1 = clip1 / clip1.w;
    float share0 = 0.0;
    float share1 = 1.0;
    if (behind0) {
        ndc0 = nearCrossing(ndc1, ndc0);
        share0 = nearShare(clip0, clip1);
    } else if (behind1) {
        ndc1 = nearCrossing(ndc0, ndc1);
        share1 = nearShare(clip0, clip1);
    }

    vec4 p0 = viewport * ndc0;
    vec4 p1 = viewport * ndc1;
    vec2 along = p1.xy - p0.xy;
    float pixels = length(along);
    vec2 dir = pixels < 1.0 ? vec2(0.0, 1.0) : along / pixels;
    vec2 perp = vec2(-dir.y, dir.x);
    float half_width = 0.5 * pen_width;
    vec4 place0 = placeAt(share0, from, to, clip0.w, clip1.w);
    vec4 place1 = placeAt(share1, from, to, clip0.w, clip1.w);
    emitCorner(p0, place0, share0, -dir * half_width);
    emitCorner(p0, place0, share0, perp * half_width);
    emitCorner(p0, place0, share0, -perp * half_width);
    emitCorner(p1, place1, share1, perp * half_width);
    emitCorner(p1, place1, share1, -perp * half_width);
    emitCorner(p1, place1, share1, dir * half_width);
    EndPrimitive();
}
