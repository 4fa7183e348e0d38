#version 430 core
// A point becomes a quad of the size of its texture in pixels, whatever the distance. Pixels are counted from the top
// left, y down; the point is the lower left corner of the quad. Its twin for the glyphs of labels is
// PerGlyphCaption.geom: what is mended in one is mended in the other.
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

out vec2 texture_coords;

uniform mat4 viewport = mat4(1.0);          // normalised device coordinates to pixels
uniform mat4 viewport_inverted = mat4(1.0); // and back
uniform sampler2D tex;
uniform vec2 offset = vec2(0.0, 0.0); // pixels, y up
// The window of the texture that is shown.
uniform float uTexLeft = 0.0;
uniform float uTexRight = 1.0;
uniform float uTexTop = 0.0;
uniform float uTexBottom = 1.0;

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
    vec4 p = viewport * (clip / clip.w) + vec4(offset.x, -offset.y, 0.0, 0.0);
    vec2 size = vec2(textureSize(tex, 0));
    vec4 dx = vec4(size.x * (uTexRight - uTexLeft), 0.0, 0.0, 0.0);
    vec4 dy = vec4(0.0, size.y * (uTexTop - uTexBottom), 0.0, 0.0);
    emitCorner(p, uTexLeft, uTexBottom);
    emitCorner(p + dx, uTexRight, uTexBottom);
    emitCorner(p + dy, uTexLeft, uTexTop);
    emitCorner(p + dx + dy, uTexRight, uTexTop);
    EndPrimitive();
}
