// Light for surfaces: one white light, the same on both sides of a surface. In its own frame throughout, in which it
// comes from +z and the eye is the origin: see LightFrame.glsl.

in vec3 light_normal; // 0 where the light has no direction
in vec3 light_position;

// The colour of the surface under the light, with a colour of its own for each term. Where the diffuse term cannot be
// told (the normal or the direction of the light is zero or not a number) there is the ambient one only. May exceed 1.
vec3 lightColor(vec3 ambient_color, vec3 diffuse_color, vec3 specular_color)
{
    const float ambient = 0.3;
    const vec3 l = vec3(0.0, 0.0, 1.0);
    vec3 n = normalize(light_normal);
    float diffuse = abs(dot(n, l));
    // drivers may make something else than a NaN of 0 / 0
    bool has_normal = dot(light_normal, light_normal) > 0.0;
    if (!has_normal || isnan(diffuse)) return ambient * ambient_color;

    float mirrored = dot(normalize(-light_position), reflect(-l, n));
    // its 32nd power, for which drivers would take a logarithm
    float shine = mirrored > 0.0 ? mirrored : 0.0;
    for (int i = 0; i < 5; ++i)
        shine *= shine;
    float specular = 0.25 * shine;
    return ambient * ambient_color + diffuse * diffuse_color + specular * specular_color;
}

vec3 lightColor(vec3 surface_color)
{
    return lightColor(surface_color, surface_color, surface_color);
}
