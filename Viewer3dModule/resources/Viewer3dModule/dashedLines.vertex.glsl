#version 430 core
// Lines that are dashed in pixels. The start of a segment is its provoking vertex; whoever draws sets the first-vertex
// convention, so that it is the first one.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(location = 0) in vec3 point_coords;

uniform mat4 projection = mat4(1.0);
uniform mat4 view = mat4(1.0);
uniform mat4 model = mat4(1.0);
uniform float pen_width = 1.0;
uniform int item_flags = item_normal_flag;
uniform uvec2 item_id = uvec2(0u, 0u);
uniform float u_dashSize = 0.0; // pixels; below 1 the line is solid
uniform float u_gapSize = 0.0;  // pixels
ITEM_UNIFORMS

invariant gl_Position; // see common.vertex

out Item
{
    ITEM_FIELDS
}
item;

// Where the fragment and its segment's start lie: clip coordinates, divided by w only in the fragment stage. This gives
// the exact place on screen, without perspective, also for segments with an end behind the camera, which a position
// divided here would not survive.
out vec4 vertPos;
flat out vec4 startPos; // clip coordinates of the segment's start
flat out vec2 dashes;   // u_dashSize, u_gapSize

void main()
{
    vec4 world = model * vec4(point_coords, 1.0);
    gl_Position = projection * (view * world);
    gl_PointSize = pen_width;
    vertPos = gl_Position;
    startPos = gl_Position;
    dashes = vec2(u_dashSize, u_gapSize);
    FILL_ITEM(item_flags, item_id, 0)
    item.place = fencePlace(world);
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    item.vertex_color.r = world.z;
#endif
#endif
}
