#version 430 core
// Surfaces: plain, coloured by their vertices or textured, with or without light. What the vertices bring along is
// chosen by the same defines as in the vertex stage; a primitive may leave attributes out that its modes do not read.
// With RX_USE_PER_VERTEX_COLOR and RX_USE_ELEVATION_COLOR their colour is that of the height, and only the alpha is
// that of the source. With RX_ITEM_COLORS_ONLY none of the items has a colour mode but the first one, or a material:
// what is not read is not interpolated either, and drivers that run both sides of a condition are spared one. With
// RX_NO_MATERIALS none has a material. With RX_VISIBLE_ITEMS_ONLY besides, see SelectionMode.glsl. With
// RX_LIGHT_IN_ALPHA and RX_VERTEX_STAGE_COLORS the vertex stage hands less on, see common.vertex.glsl. With
// RX_LARGE_SURFACES it hands on nothing that is the item's own: items are few for their triangles, and the colour of one
// and its mode are read here. All of them are lit, and none is highlighted.
#if defined(RX_VISIBLE_ITEMS_ONLY) && !defined(RX_USE_ELEVATION_COLOR)
#define ALL_IS_VISIBLE
#endif
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dModule/SelectionMode.glsl"

in Item
{
    ITEM_FIELDS
}
item;

#ifdef RX_LARGE_SURFACES
ITEM_UNIFORMS
#define OWN_FLAGS item_normal_flag
#define OWN_COLOR_MODE uColorMode
#define ITEM_COLOR item_color
#define IS_LIT true
#else
#define OWN_FLAGS item.flags
#define OWN_COLOR_MODE item.color_mode
#ifdef RX_LIGHT_IN_ALPHA
#define ITEM_COLOR vec4(item.color.rgb, abs(item.color.a))
#define IS_LIT (item.color.a >= 0.0)
#else
#define ITEM_COLOR item.color
#define IS_LIT (item.is_lit != 0)
#endif
#endif

// These and filled_texture_back are read here and not handed on with the item: they are the same for nearly all items,
// and what costs a frame is a uniform of the fragment stage that changes from item to item.
// 1: the colour is multiplied by the material's, one for each term of the light; without light by the diffuse one.
uniform int uMaterialMode = 0;
uniform vec3 uMaterialAmbient = vec3(1.0, 1.0, 1.0);
uniform vec3 uMaterialDiffuse = vec3(1.0, 1.0, 1.0);
uniform vec3 uMaterialSpecular = vec3(1.0, 1.0, 1.0);

#ifdef RX_USE_PER_VERTEX_TEX_COORDS
in vec2 texture_coords;
uniform sampler2D uTexture0;
uniform int filled_texture_back = 0; // 1: the item's colour shows behind transparent texels
#endif

#ifdef RX_USE_PER_VERTEX_NORMAL
//#include "shader:Viewer3dModule/light.fragment.glsl"
#endif

#ifdef RX_USE_ELEVATION_COLOR
//#include "shader:Viewer3dModule/gradient.fragment.glsl"
#endif

// The colour of the surface itself, and that of a highlighted one.
void chooseColors(out vec4 own_color, out vec4 highlight_color)
{
    own_color = ITEM_COLOR;
    highlight_color = ITEM_COLOR;
#ifndef RX_ITEM_COLORS_ONLY
#ifdef RX_USE_PER_VERTEX_COLOR
    if (OWN_COLOR_MODE == vertex_color_mode) own_color = item.vertex_color;
#endif
#ifdef RX_USE_PER_VERTEX_TEX_COORDS
    if (OWN_COLOR_MODE == texture_color_mode) {
        vec4 texel = texture(uTexture0, texture_coords);
        if (filled_texture_back == 0) {
            own_color = texel;
            highlight_color = inShapeOf(texel, highlight_color);
        } else {
            own_color = vec4(mix(own_color.rgb, texel.rgb, texel.a), mix(own_color.a, 1.0, texel.a));
        }
    }
#endif
#endif
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    own_color = elevColor(item.vertex_color.r) * vec4(1.0, 1.0, 1.0, own_color.a);
#endif
#endif
}

vec3 litColor(vec3 surface_color)
{
#if defined(RX_ITEM_COLORS_ONLY) || defined(RX_NO_MATERIALS)
    const bool has_material = false;
#else
    bool has_material = uMaterialMode == 1;
#endif
#ifdef RX_USE_PER_VERTEX_NORMAL
    if (IS_LIT) {
        if (!has_material) return lightColor(surface_color);
        return lightColor(surface_color * uMaterialAmbient, surface_color * uMaterialDiffuse,
                          surface_color * uMaterialSpecular);
    }
#endif
    return has_material ? surface_color * uMaterialDiffuse : surface_color;
}

void main()
{
#if defined(RX_ITEM_COLORS_ONLY) && !defined(RX_USE_ELEVATION_COLOR)
    vec4 surface = ITEM_COLOR; // which the flags have chosen already
#elif defined(RX_VERTEX_STAGE_COLORS)
    vec4 surface = item.vertex_color;
#else
    vec4 own_color;
    vec4 highlight_color;
    chooseColors(own_color, highlight_color);
    vec4 surface = colorFromFlags(OWN_FLAGS, own_color, highlight_color);
#endif
    writeItem(vec4(litColor(surface.rgb), surface.a), item.id, item.index, item.place, vec4(0.0));
}
