#version 430 core
// Dashes and gaps of fixed lengths in pixels, anew from the start of each segment, or from where it comes into sight
// through the near plane. Only colours are dashed: a line is selected in its gaps too. Dashed lines take no part in
// glue masks. With RX_USE_PER_VERTEX_COLOR and RX_USE_ELEVATION_COLOR their colour is that of the height.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

in vec4 vertPos;
flat in vec4 startPos;
flat in vec2 dashes;

#ifdef RX_USE_ELEVATION_COLOR
//#include "shader:Viewer3dModule/gradient.fragment.glsl"
#endif

uniform vec2 u_resolution; // size of the viewport, pixels

// Where the segment starts on screen, normalised device coordinates. A start behind the camera has no such place: it is
// moved along the segment, which this fragment is a point of, to the near plane.
vec2 startOnScreen()
{
    float depth_of_start = startPos.z + startPos.w; // from the near plane on, where z = -w
    vec4 start = startPos;
    if (depth_of_start < 0.0)
        start = mix(startPos, vertPos, depth_of_start / (depth_of_start - (vertPos.z + vertPos.w)));
    return start.xy / start.w;
}

bool isInGap()
{
    float dash = dashes.x;
    if (dash < 1.0) return false;
    vec2 from_start = vertPos.xy / vertPos.w - startOnScreen();
    float distance_in_pixels = length(from_start * u_resolution / 2.0);
    float period = dash + dashes.y;
    return fract(distance_in_pixels / period) > dash / period;
}

void main()
{
    if (draw_mode == glue_mask_draw) discard;
    if (draw_mode == ordinal_draw && isInGap()) discard;
    vec4 shown = item.color;
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    vec4 own_color = elevColor(item.vertex_color.r) * vec4(1.0, 1.0, 1.0, item.color.a);
    shown = colorFromFlags(item.flags, own_color, item.color);
#endif
#endif
    writeItem(shown, item.id, item.index, item.place, vec4(0.0));
}
