#version 430 core
// Spheres and cylinders: plain or textured, with or without light. Wire mode arrives as plain and without light. With
// RX_USE_PER_VERTEX_COLOR and RX_USE_ELEVATION_COLOR their colour is that of the height, and only the alpha is that of
// the source.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"
//#include "shader:Viewer3dModule/light.fragment.glsl"

in Item
{
    ITEM_FIELDS
}
item;

in vec2 texture_coords;

uniform sampler2D uTexture0;

#ifdef RX_USE_ELEVATION_COLOR
//#include "shader:Viewer3dModule/gradient.fragment.glsl"
#endif

void main()
{
    vec4 surface = item.color;
    if (item.color_mode == texture_color_mode) {
        vec4 texel = texture(uTexture0, texture_coords);
        surface = colorFromFlags(item.flags, texel, inShapeOf(texel, item.color));
    }
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    vec4 own_color = elevColor(item.vertex_color.r) * vec4(1.0, 1.0, 1.0, surface.a);
    surface = colorFromFlags(item.flags, own_color, surface);
#endif
#endif
    vec3 shown = item.is_lit != 0 ? lightColor(surface.rgb) : surface.rgb;
    writeItem(vec4(shown, surface.a), item.id, item.index, item.place, vec4(0.0));
}
