// Unit quaternions for rotations: (x, y, z) is the axis times sin(angle / 2), w is cos(angle / 2). Angles are radians.

// The axis has length 1; the rotation is counter-clockwise seen against the axis.
vec4 quaternion_from_axis_angle(vec3 axis, float angle)
{
    return vec4(axis * sin(0.5 * angle), cos(0.5 * angle));
}

// The rotation b followed by the rotation a.
vec4 quaternion_multiply(vec4 a, vec4 b)
{
    return vec4(a.w * b.xyz + b.w * a.xyz + cross(a.xyz, b.xyz), a.w * b.w - dot(a.xyz, b.xyz));
}

vec3 quaternion_rotate(vec4 q, vec3 v)
{
    vec3 t = 2.0 * cross(q.xyz, v);
    return v + q.w * t + cross(q.xyz, t);
}

// The shortest rotation that takes one direction to the other; both have length 1. Between opposite directions it is
// half a turn about some axis perpendicular to them.
vec4 quaternion_between(vec3 from, vec3 to)
{
    float cosine = dot(from, to);
    if (cosine < -0.999999) {
        vec3 other = abs(from.x) < 0.9 ? vec3(1.0, 0.0, 0.0) : vec3(0.0, 1.0, 0.0);
        return vec4(normalize(cross(from, other)), 0.0);
    }
    return normalize(vec4(cross(from, to), 1.0 + cosine));
}
