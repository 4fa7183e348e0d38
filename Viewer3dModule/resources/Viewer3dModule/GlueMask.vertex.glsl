#version 430 core
// The vertex stage of the glue programs.

layout(location = 0) in vec3 point_coords;

uniform mat4 projection = mat4(1.0);
uniform mat4 view = mat4(1.0);
uniform mat4 model = mat4(1.0);
uniform float pen_width = 1.0; // pixels
// The layers that the item can be snapped to, one bit each. Changes with every item, so it is read here only.
uniform uint glue_mask = 0xFFFFFFFFu;

invariant gl_Position; // see common.vertex

out GlueVertex
{
    vec3 real_coords;
    flat uint mask;
}
glue;

void main()
{
    vec4 world = model * vec4(point_coords, 1.0);
    gl_Position = projection * (view * world);
    gl_PointSize = pen_width;
    glue.real_coords = world.xyz;
    glue.mask = glue_mask;
}
