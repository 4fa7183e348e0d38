#version 430 core
// A glyph becomes a quad of the size of its texture in pixels, whatever the distance. Pixels are counted from
// the top left, y down. A label of positive height is scaled as a whole, places and images, so that its
// images are so many pixels high: they must be equally high then. One of no height is shown as it was laid
// out, one texel a pixel, with its anchor moved to the next corner of pixels, so that letters are sharp. Its
// twin for single pictures is caption.geom, which leaves them where they are: what is mended in one is mended
// in the other.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(points) in;
layout(triangle_strip, max_vertices=4) out;

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

in float glyph_height[];
in vec2 glyph_place[];
out vec2 texture_coords;

uniform mat4 viewport = mat4(1.0);          // normalised device coordinates to pixels
uniform mat4 viewport_inverted = mat4(1.0); // and back
uniform sampler2D tex;
// The window of the texture that is shown.
uniform float uTexLeft = 0.0;
uniform float uTexRight = 1.0;
uniform float uTexTop = 0.0;
uniform float uTexBottom = 1.0;

// Half a pixel would do, if places half-way between two corners, of which there are many, did not go to either by
// rounding errors: to the left in a picture, to the right in a part of it.
const float nearly_half = 0.5 - 1.0 / 64.0;

void emitCorner(vec4 pixel, float s, float t)
{
    gl_Position = viewport_inverted * pixel;
    texture_coords = vec2(s, t);
    COPY_ITEM(item_in[0])
    EmitVertex();
}

void main()
{
    vec4 clip = gl_in[0].gl_Position;
    if (clip.w == 0.0) return;
    vec2 size = vec2(textureSize(tex, 0));
    float scale = glyph_height[0] > 0.0 && size.y > 0.0 ? glyph_height[0] / size.y : 1.0;
    vec2 place = glyph_place[0] * scale;
    vec4 p = viewport * (clip / clip.w);
    if (glyph_height[0] <= 0.0) p.xy = floor(p.xy + nearly_half);
    p.xy += vec2(place.x, -place.y);
    vec4 dx = vec4(scale * size.x * (uTexRight - uTexLeft), 0.0, 0.0, 0.0);
    vec4 dy = vec4(0.0, scale * size.y * (uTexTop - uTexBottom), 0.0, 0.0);
    emitCorner(p, uTexLeft, uTexBottom);
    emitCorner(p + dx, uTexRight, uTexBottom);
    emitCorner(p + dy, uTexLeft, uTexTop);
    emitCorner(p + dx + dy, uTexRight, uTexTop);
    EndPrimitive();
}
