// Light for surfaces: one white light, the same on both sides of a surface. Eye coordinates throughout.

in vec3 view_normal;
in vec3 view_position;

uniform vec3 uLightDirection = vec3(1.0, 1.0, 1.0); // towards the light

// The colour of the surface under the light, with a colour of its own for each term. Only a normal that is not zero
// has a diffuse and a specular term. May exceed 1.
vec3 lightColor(vec3 ambient_color, vec3 diffuse_color, vec3 specular_color)
{
    const float ambient = 0.3;
    float normal_length = length(view_normal);
    if (!(normal_length > 0.0)) return ambient * ambient_color;

    vec3 n = view_normal / normal_length;
    vec3 l = normalize(uLightDirection);
    vec3 v = normalize(-view_position);
    float diffuse = abs(dot(n, l));
    float specular = 0.25 * pow(max(dot(v, reflect(-l, n)), 0.0), 32.0);
    return ambient * ambient_color + diffuse * diffuse_color + specular * specular_color;
}

vec3 lightColor(vec3 surface_color)
{
    return lightColor(surface_color, surface_color, surface_color);
}
