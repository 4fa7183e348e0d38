#version 430 core
// Selection by nodes: a segment becomes its two ends, points of the size that the vertex stage gave. The primitive id
// is the number of the node in a strip: an inner node, which comes from both of its segments, has one id.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(lines) in;
layout(points, max_vertices=2) out;

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

void main()
{
    for (int i = 0; i < 2; ++i) {
        vec4 clip = gl_in[i].gl_Position;
        if (!isInView(clip)) continue;
        gl_Position = clip;
        gl_PointSize = gl_in[i].gl_PointSize;
        gl_PrimitiveID = gl_PrimitiveIDIn + i;
        COPY_ITEM(item_in[i])
        EmitVertex();
    }
}
