// What the stages before the fragments do for the fence of the view: they say of each vertex where it lies, and
// Fence.glsl looks at that. Programs have a fence with one of the defines RX_USE_SPHERE_FENCE and RX_USE_SWEPT_FENCE
// only: drivers that run both sides of a condition would make every frame pay for what it does not have.

#ifdef RX_USE_SWEPT_FENCE
uniform mat4 fence_from_scene = mat4(1.0); // to the frame in which the fence is looked at
#endif

// The place for Fence.glsl of a point in homogeneous scene coordinates with w above 0. Between vertices it changes as
// coordinates do. Stages that emit positions which are divided by w divide this by the same w.
vec4 fencePlace(vec4 scene_point)
{
#ifdef RX_USE_SWEPT_FENCE
    return fence_from_scene * scene_point;
#else
    return scene_point;
#endif
}
