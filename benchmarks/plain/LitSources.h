#pragma once

// Light for the plain programs: one white light, the same on both sides of a surface. The highlight is the
// 32nd power, by five squares, for which drivers would take a logarithm.
#define PLAIN_LIGHT                                                                                          \
    "uniform vec3 light;\n"                                                                                  \
    "in vec3 eyeNormal;\n"                                                                                   \
    "in vec3 eyePosition;\n"                                                                                 \
    "vec3 lit(vec3 color)\n"                                                                                 \
    "{\n"                                                                                                    \
    "    vec3 n = normalize(eyeNormal);\n"                                                                   \
    "    float shine = max(dot(normalize(-eyePosition), reflect(-light, n)), 0.0);\n"                        \
    "    for (int i = 0; i < 5; ++i)\n"                                                                      \
    "        shine *= shine;\n"                                                                              \
    "    return color * (0.3 + abs(dot(n, light)) + 0.25 * shine);\n"                                        \
    "}\n"
