#version 430 core
// The vertex stage of most programs. What a vertex and an item bring along is chosen by defines, and so is what is
// handed on: drivers that set up each triangle and point for the fragments take time for each slot of four values.
//   RX_LIGHT_IN_ALPHA       the alpha of the item's colour is negative where is_lit is 0, which need not be read then
//   RX_VERTEX_STAGE_COLORS  the colour of the vertices is that which is shown, by the item's flags and colour mode: of
//                           what is not lit. Colours that are the same all over stay what they are but for rounding,
//                           which is less than the eight bits of a picture show
//   RX_LARGE_SURFACES       nothing but triangles is drawn, which have no size
#if defined(RX_USE_ITEM_RECORDS) && !defined(RX_USE_INSTANCED_DRAW)
#define ITEM_HAS_RECORD
#endif
//#include "shader:Viewer3dModule/DrawModes.glsl"

#ifdef RX_NO_USE_PER_VERTEX_COORDS
const vec3 point_coords = vec3(0.0);
#else
layout(location = 0) in vec3 point_coords;
#endif

#ifdef RX_USE_PER_VERTEX_COLOR
layout(location = 1) in vec4 point_color;
#endif

#ifdef RX_USE_PER_VERTEX_NORMAL
layout(location = 2) in vec3 normal_coords;
//#include "shader:Viewer3dLight/LightFrame.glsl"
out vec3 light_normal;
out vec3 light_position;
#ifdef ITEM_HAS_RECORD
layout(location = 11) in mat3 normalMatrix; // takes locations 11 to 13
#else
uniform mat3 normalMatrix = mat3(1.0);
#endif
#endif

#ifdef RX_USE_PER_VERTEX_TEX_COORDS
layout(location = 3) in vec2 tex_coords;
out vec2 texture_coords;
#endif

#ifdef ITEM_HAS_RECORD
layout(location = 4) in mat4 model; // takes locations 4 to 7
layout(location = 8) in vec4 item_color;
layout(location = 9) in uvec4 item_record; // see RECORD_FLAGS
layout(location = 10) in float pen_width;
uniform int first_item = 0; // the number of the first one of a draw call
#else
uniform mat4 model = mat4(1.0);
uniform float pen_width = 1.0;
#ifdef RX_USE_INSTANCED_DRAW
#ifdef RX_USE_INSTANCE_POSITION
layout(location = 4) in vec3 item_pos;
layout(location = 5) in int item_flags;
layout(location = 6) in uvec2 item_id;
#else
layout(location = 4) in mat4 item_transform; // takes locations 4 to 7
layout(location = 8) in int item_flags;
layout(location = 9) in uvec2 item_id;
#endif
#else
uniform int item_flags = item_normal_flag;
uniform uvec2 item_id = uvec2(0u, 0u);
#endif
#endif

uniform mat4 projection = mat4(1.0);
uniform mat4 view = mat4(1.0);
ITEM_UNIFORMS

// The glue masks, dashed lines and labels of an item are made by other sources and must lie on its pixels: all of them
// compute positions by the same products, and this keeps a compiler from computing them in different ways.
invariant gl_Position;

out Item
{
    ITEM_FIELDS
}
item;

vec4 worldPosition()
{
    vec4 world = model * vec4(point_coords, 1.0);
#ifdef RX_USE_INSTANCED_DRAW
#ifdef RX_USE_INSTANCE_POSITION
    world += vec4(item_pos, 0.0);
#else
    world = item_transform * world;
#endif
#endif
    return world;
}

void main()
{
    vec4 world = worldPosition();
    vec4 eye = view * world;
    gl_Position = projection * eye;
#ifndef RX_LARGE_SURFACES
    gl_PointSize = pen_width;
#endif

#ifdef RX_USE_PER_VERTEX_NORMAL
    mat3 frame = lightFrame();
    light_normal = frame * (normalMatrix * normal_coords);
    light_position = frame * eye.xyz;
#endif
#ifdef RX_USE_PER_VERTEX_TEX_COORDS
    texture_coords = tex_coords;
#endif

#ifdef ITEM_HAS_RECORD
    FILL_ITEM(RECORD_FLAGS(item_record), item_record.zw, int(item_record.y) - first_item)
#elif defined(RX_USE_INSTANCED_DRAW)
    FILL_ITEM(item_flags, item_id, gl_InstanceID)
#else
    FILL_ITEM(item_flags, item_id, 0)
#endif
    item.place = fencePlace(world);
#ifdef RX_USE_PER_VERTEX_COLOR
    item.vertex_color = point_color;
#ifdef RX_VERTEX_STAGE_COLORS
    vec4 own_color = item.color_mode == vertex_color_mode ? point_color : item.color;
    item.vertex_color = colorFromFlags(item.flags, own_color, item.color);
#endif
#ifdef RX_USE_ELEVATION_COLOR
    item.vertex_color.r = world.z;
#endif
#endif
#ifdef RX_LIGHT_IN_ALPHA
    if (item.is_lit == 0) item.color.a = -item.color.a;
#endif
}
