// Unit quaternions for rotations: (x, y, z) is the axis times sin(angle / 2), w is cos(angle / 2). Angles are radians.

// The axis has length 1; the rotation is counter-clockwise seen against the axis.
vec4 quaternionFromAxisAngle(vec3 axis, float angle)
{
    return vec4(axis * sin(0.5 * angle), cos(0.5 * angle));
}

// The rotation b followed by the rotation a.
vec4 quaternionMultiply(vec4 a, vec4 b)
{
    return vec4(a.w * b.xyz + b.w * a.xyz + cross(a.xyz, b.xyz), a.w * b.w - dot(a.xyz, b.xyz));
}

vec3 quaternionRotate(vec4 q, vec3 v)
{
    vec3 t = 2.0 * cross(q.xyz, v);
    return v + q.w * t + cross(q.xyz, t);
}

// The shortest rotation between directions of length 1 that are far from opposite.
vec4 quaternionBetweenNear(vec3 from, vec3 to)
{
    return normalize(vec4(cross(from, to), 1.0 + dot(from, to)));
}

// A rotation that takes one direction to the other; both have length 1. It is the shortest one, but towards opposite
// directions, where the axis of that is lost in the rounding of the two: there it is half a turn about some axis
// perpendicular to the first, and what is then left to the other.
vec4 quaternionBetween(vec3 from, vec3 to)
{
    if (dot(from, to) > -0.9) return quaternionBetweenNear(from, to);
    vec3 other = abs(from.x) < 0.9 ? vec3(1.0, 0.0, 0.0) : vec3(0.0, 1.0, 0.0);
    vec4 half_turn = vec4(normalize(cross(from, other)), 0.0);
    return quaternionMultiply(quaternionBetweenNear(-from, to), half_turn);
}
