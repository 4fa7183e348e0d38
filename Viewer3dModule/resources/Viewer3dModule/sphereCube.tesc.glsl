#version 430 core
// How finely a sphere is divided. A patch is one point, the centre of the sphere.
//#include "shader:Viewer3dModule/DrawModes.glsl"

layout(vertices = 1) out;

// An array of one, not a patch output: those must not be qualified as flat, and all stages have the same fields.
in Item
{
    ITEM_FIELDS
}
item_in[];

out Item
{
    ITEM_FIELDS
}
item_out[];
// COPY_ITEM fills what is called item
#define item item_out[gl_InvocationID]

// Numbers of segments around the sphere and from pole to pole, at the rim of the patch and inside of it. The rim is the
// two poles and the meridian where the texture begins and ends.
uniform float uTessLevelOuter = 32.0;
uniform float uTessLevelInner = 32.0;

// A level of 1 would leave nothing of a sphere.
float levelOrDefault(float level)
{
    return level > 1.0 ? level : 32.0;
}

void main()
{
    gl_out[gl_InvocationID].gl_Position = gl_in[gl_InvocationID].gl_Position;
    COPY_ITEM(item_in[gl_InvocationID])

    float outer = levelOrDefault(uTessLevelOuter);
    float inner = levelOrDefault(uTessLevelInner);
    gl_TessLevelOuter[0] = outer;
    gl_TessLevelOuter[1] = outer;
    gl_TessLevelOuter[2] = outer;
    gl_TessLevelOuter[3] = outer;
    gl_TessLevelInner[0] = inner;
    gl_TessLevelInner[1] = inner;
}
