#pragma once

// What the programs that draw items one by one have in common: the item's uniforms, read by the vertex stage
// only and handed on flat, and a fragment stage that shows colours or, where a user points, identifiers.
#define PLAIN_ITEM_UNIFORMS                                                                                  \
    "uniform mat4 viewProjection;\n"                                                                         \
    "uniform vec4 chosenColor;\n"                                                                            \
    "uniform mat4 model;\n"                                                                                  \
    "uniform vec4 color;\n"                                                                                  \
    "uniform uvec2 id;\n"                                                                                    \
    "uniform int flags;\n"                                                                                   \
    "uniform float width;\n"

#define PLAIN_SHOW                                                                                           \
    "uniform int drawsIds;\n"                                                                                \
    "layout(location = 0) out vec4 result;\n"                                                                \
    "void show(vec4 color, uvec2 id) { result = drawsIds == 0 ? color : unpackUnorm4x8(id.x ^ id.y); }\n"
