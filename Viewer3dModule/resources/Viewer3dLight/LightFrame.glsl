// Where Viewer3dModule/light.fragment.glsl looks at surfaces from. The last stage that moves their vertices hands their
// normals and places on as lightFrame() turns them: out of eye coordinates, so that the light comes from +z. To the
// fragment stage the light is then the same everywhere, and it need not be told: drivers that fetch a uniform component
// by component for every pixel of a block spend more time on the light's direction than on the shading.

uniform vec3 uLightDirection = vec3(1.0, 1.0, 1.0); // towards the light, eye coordinates

// A rotation or a reflection; 0 where the light has no direction: then nothing has a normal, either.
mat3 lightFrame()
{
    float square = dot(uLightDirection, uLightDirection);
    if (!(square > 0.0)) return mat3(0.0);
    vec3 l = uLightDirection * inversesqrt(square);
    // two unit vectors across, which a light from anywhere but the side has near the x and the y axis
    float side = l.z < 0.0 ? -1.0 : 1.0;
    vec2 tilt = l.xy / (1.0 + abs(l.z));
    vec3 x = vec3(1.0 - l.x * tilt.x, -l.y * tilt.x, -side * l.x);
    vec3 y = vec3(-l.x * tilt.y, 1.0 - l.y * tilt.y, -side * l.y);
    return transpose(mat3(x, y, l));
}
