#version 430 core
// Selection by nodes: a face becomes its corners, points of the size that the vertex stage gave. Corner i of face f has
// the primitive id 3 f + i: its place in the vertices, or the indices, of a draw of separate triangles.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(triangles) in;
layout(points, max_vertices=3) out;

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
    for (int i = 0; i < 3; ++i) {
        vec4 clip = gl_in[i].gl_Position;
        if (!isInView(clip)) continue;
        gl_Position = clip;
        gl_PointSize = gl_in[i].gl_PointSize;
        gl_PrimitiveID = 3 * gl_PrimitiveIDIn + i;
        COPY_ITEM(item_in[i])
        EmitVertex();
    }
}
