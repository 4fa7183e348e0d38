#version 430 core
// Spheres and cylinders: plain or textured, with or without light. Wire mode arrives as plain and without light.
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

void main()
{
    vec4 surface = item.color;
    if (item.color_mode == texture_color_mode) {
        vec4 texel = texture(uTexture0, texture_coords);
        surface = colorFromFlags(item.flags, texel, inShapeOf(texel, item.color));
    }
    vec3 shown = item.is_lit != 0 ? lightColor(surface.rgb) : surface.rgb;
    writeItem(vec4(shown, surface.a), item.id, item.index, item.place, vec4(0.0));
}
