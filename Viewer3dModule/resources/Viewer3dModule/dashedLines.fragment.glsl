#version 430 core
// Dashes and gaps of fixed lengths in pixels, anew from the start of each segment. Only colours are dashed: a line is
// selected in its gaps too. Dashed lines take no part in glue masks.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

in vec4 vertPos;
flat in vec3 startPos;

uniform vec2 u_resolution;     // size of the viewport, pixels
uniform float u_dashSize = 0.0; // pixels; below 1 the line is solid
uniform float u_gapSize = 0.0;  // pixels

bool isInGap()
{
    if (u_dashSize < 1.0) return false;
    vec2 from_start = vertPos.xy / vertPos.w - startPos.xy;
    float distance_in_pixels = length(from_start * u_resolution / 2.0);
    float period = u_dashSize + u_gapSize;
    return fract(distance_in_pixels / period) > u_dashSize / period;
}

void main()
{
    if (draw_mode == glue_mask_draw) discard;
    if (draw_mode == ordinal_draw && isInGap()) discard;
    write_item(item.color, item.id, 0, vec4(0.0));
}
