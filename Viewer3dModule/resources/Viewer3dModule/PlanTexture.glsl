// A plan in tiles, laid over what is drawn: planTextureColor(plan_coords). For fragment stages. Whoever draws gives
// uTexturePlan a texture unit of its own also when no plan is shown: at first all samplers are at unit 0, and samplers
// of two kinds at one unit, such as this one and a mesh's sampler2D, make each draw call an error.

// From plan coordinates to columns (x) and rows (y) of tiles; the rest of the result means nothing.
uniform mat4 uTexturePlanMatrix = mat4(1.0);
// One layer a picture. Pictures meet at their edges: the texture wants clamping there.
uniform sampler2DArray uTexturePlan;
uniform int uTexturePlanRows = 0;
uniform int uTexturePlanCols = 0;

// One quadtree a tile. A node is three numbers: where its first child lies, where its next sibling lies, its layer in
// the texture. Places count numbers, not nodes; 0 or less is no place. First the roots, row by row. The four children
// cover the quarters (0, 0), (1, 0), (0, 1), (1, 1) in columns and rows; a child of layer 0 or less has no picture.
layout(std430, binding = 7) readonly buffer texture_plan_tree
{
    int texture_plan_nodes[];
};

const int max_plan_depth = 8;

// Nothing is what lies beyond the tree.
int planNumber(int place)
{
    return place >= 0 && place < texture_plan_nodes.length() ? texture_plan_nodes[place] : 0;
}

// The child of a node for a quarter, 0 when there is none with a picture.
int planChild(int node, int quarter)
{
    int child = planNumber(node);
    for (int i = 0; i < quarter && child > 0; ++i)
        child = planNumber(child + 1);
    return child > 0 && planNumber(child + 2) > 0 ? child : 0;
}

// The plan at its finest picture, transparent black beside the tiles. Neighbouring fragments must all call it.
vec4 planTextureColor(vec3 plan_coords)
{
    vec2 t = (uTexturePlanMatrix * vec4(plan_coords, 1.0)).xy;
    // taken before t jumps from picture to picture, so that no border of tiles shows
    vec2 along_x = dFdx(t);
    vec2 along_y = dFdy(t);
    bool is_inside = all(greaterThanEqual(t, vec2(0.0))) &&
                     all(lessThan(t, vec2(uTexturePlanCols, uTexturePlanRows)));
    if (!is_inside) return vec4(0.0);

    ivec2 tile = ivec2(t);
    t = fract(t);
    int node = (tile.y * uTexturePlanCols + tile.x) * 3;
    for (int depth = 0; depth < max_plan_depth; ++depth) {
        ivec2 quarter = ivec2(2.0 * t);
        int child = planChild(node, quarter.y * 2 + quarter.x);
        if (child == 0) break;
        node = child;
        t = fract(2.0 * t);
        along_x *= 2.0;
        along_y *= 2.0;
    }
    return textureGrad(uTexturePlan, vec3(t, float(planNumber(node + 2))), along_x, along_y);
}
