#version 430 core
// Takes points to scene coordinates and no further: for geometry stages that build their own surfaces along lines, and
// alone for the capture of an item's transformed vertices.
//#include "shader:Viewer3dModule/DrawModes.glsl"

#ifdef RX_USE_ADJACENCY_EMULATION
// Lines with adjacency out of a plain list of points: one instance a segment, four vertices an instance. The four
// points of a segment come from one buffer as attributes 0 to 3, each starting one point further on, and advance by one
// point an instance. The list holds its first and its last point twice. Several lists in one buffer are several draw
// calls, each from its base instance on.
layout(location = 0) in vec3 point_coords[4];
#else
layout(location = 0) in vec3 point_coords;
#endif

#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ADJACENCY_EMULATION
layout(location = 4) in vec4 point_color[4]; // fed as the points are
#else
layout(location = 1) in vec4 point_color;
#endif
#endif

uniform mat4 model = mat4(1.0);
uniform int item_flags = item_normal_flag;
uniform uvec2 item_id = uvec2(0u, 0u);
ITEM_UNIFORMS

// The point's place in the buffer; with emulation counted from the base instance of the draw call, which no stage is
// told of.
flat out int path_index;

out Item
{
    ITEM_FIELDS
}
item;

void main()
{
    FILL_ITEM(item_flags, item_id, 0)
#ifdef RX_USE_ADJACENCY_EMULATION
    int corner = gl_VertexID % 4;
    gl_Position = model * vec4(point_coords[corner], 1.0);
    path_index = gl_InstanceID + corner;
#ifdef RX_USE_PER_VERTEX_COLOR
    item.vertex_color = point_color[corner];
#endif
#else
    gl_Position = model * vec4(point_coords, 1.0);
    path_index = gl_VertexID;
#ifdef RX_USE_PER_VERTEX_COLOR
    item.vertex_color = point_color;
#endif
#endif
    item.place = fencePlace(gl_Position);
}
