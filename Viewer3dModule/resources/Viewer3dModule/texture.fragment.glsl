#version 430 core
// A texture as it is, or with RX_USE_TEXTURE_AS_BITMAP its alpha as a mask for the item's colour.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

in vec2 texture_coords;

uniform sampler2D uTexture;

void main()
{
    vec4 texel = texture(uTexture, texture_coords);
    vec4 shown = inShapeOf(texel, item.color);
#ifndef RX_USE_TEXTURE_AS_BITMAP
    shown = colorFromFlags(item.flags, texel, shown);
#endif
    writeItem(shown, item.id, item.index, item.place, vec4(0.0));
}
