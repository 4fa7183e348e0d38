#version 430 core
// A node of points under edit becomes a marker of pen_width pixels. Markers are numbered as along a polyline,
// see EditNodes.geom: node k has 2 k. There is nothing between single points to which a node could be added.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(points) in;
layout(points, max_vertices=1) out;

in Item
{
    ITEM_FIELDS
}
item_in[];

out Item
{
    ITEM_FIELDS
}
item;

flat out int marker_idx; // the marker's number among all of an item, or of all items

uniform float pen_width = 1.0;    // pixels
uniform int first_marker_idx = 0; // the number of this draw call's first node

void main()
{
    if (!isInView(gl_in[0].gl_Position)) return;
    int primitive_id = 2 * gl_PrimitiveIDIn;
    gl_Position = gl_in[0].gl_Position;
    gl_PointSize = pen_width;
    gl_PrimitiveID = primitive_id;
    marker_idx = first_marker_idx + primitive_id;
    COPY_ITEM(item_in[0])
    EmitVertex();
    EndPrimitive();
}
