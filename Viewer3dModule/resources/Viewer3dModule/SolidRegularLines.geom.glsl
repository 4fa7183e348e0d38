#version 430 core
// Lines as solids: a plane section is swept along a path, with mitred joints. The path comes in scene coordinates, as
// lines with adjacency whose ends are given twice.
//#include "shader:Viewer3dModule/DrawModes.glsl"
//#include "shader:Viewer3dLight/LightFrame.glsl"
//#include "shader:Viewer3dModule/Quaternion.glsl"

// A segment of the largest section needs 64 vertices, which with all their outputs exceed the 1024 components that
// every driver offers to one invocation. So four invocations sweep eight edges of the section each.
layout(lines_adjacency, invocations=4) in;
layout(triangle_strip, max_vertices=18) out;

const int max_section_points_count = 32;
const int edges_per_invocation = 8;

in Item
{
    ITEM_FIELDS
}
item_in[];
flat in int path_index[];

out Item
{
    ITEM_FIELDS
}
item;
out vec3 light_normal;
out vec3 light_position;

uniform mat4 projection = mat4(1.0);
uniform mat4 view = mat4(1.0);

// The section: its points in order, in scene units, seen along the path: x to the right, y up. The path runs through
// (0, 0). A closed section ends with its first point again. Fewer than two points draw nothing; points beyond the
// last that there is room for are left out.
uniform vec2 section[max_section_points_count];
// The section's normal at each of these points.
uniform vec2 section_normals[max_section_points_count];
uniform int section_points_count = 0;

// What the section's y turns to, in scene coordinates; the reserved one serves where the path runs along the first.
uniform vec3 up_vector = vec3(0.0, 0.0, 1.0);
uniform vec3 reserved_up_vector = vec3(0.0, 1.0, 0.0);

#ifdef RX_USE_PER_VERTEX_TEX_COORDS
out vec2 texture_coords; // along the path, along the section (0 to 1)
// The length of path that one copy of the texture covers; 0: each segment shows one copy.
uniform float section_period = 0.0;
// Positions along the path: for each point of the vertex buffer the length of the path up to it, in the unit of
// section_period. Read only where section_period is above 0.
layout(std430, binding = 11) readonly buffer segments_buffer
{
    float path_positions[];
};
#endif

// Longer mitres than this many times the section are cut off.
const float max_mitre = 4.0;

// The section's place at one point of the path. Depends on this point and its neighbours only, so that the segments on
// both sides meet without a gap.
struct Joint
{
    vec3 origin;
    vec4 rotation; // from the section's frame (x right, y forward, z up)
    vec3 bend;     // direction in which the section is stretched
    float stretch; // until both segments keep their width
};

vec3 directionOr(vec3 v, vec3 otherwise)
{
    float size = length(v);
    return size > 0.0 ? v / size : otherwise;
}

// Rotates the frame about the path until its z is the up vector as seen along the path.
vec4 sectionRotation(vec3 tangent)
{
    vec4 rotation = quaternionBetween(vec3(0.0, 1.0, 0.0), tangent);
    vec3 up = up_vector - tangent * dot(up_vector, tangent);
    if (length(up) <= 1.0e-3 * length(up_vector))
        up = reserved_up_vector - tangent * dot(reserved_up_vector, tangent);
    vec3 current = quaternionRotate(rotation, vec3(0.0, 0.0, 1.0));
    float sine = dot(cross(current, up), tangent);
    float cosine = dot(current, up);
    if (sine == 0.0 && cosine == 0.0) return rotation;
    return quaternionMultiply(quaternionFromAxisAngle(tangent, atan(sine, cosine)), rotation);
}

Joint jointAt(vec3 before, vec3 at, vec3 after)
{
    vec3 incoming = directionOr(at - before, directionOr(after - at, vec3(0.0, 1.0, 0.0)));
    vec3 outgoing = directionOr(after - at, incoming);
    vec3 sum = incoming + outgoing;
    vec3 tangent = length(sum) > 1.0e-3 ? normalize(sum) : incoming;
    Joint joint;
    joint.origin = at;
    joint.rotation = sectionRotation(tangent);
    joint.bend = directionOr(outgoing - incoming, vec3(0.0));
    joint.stretch = 1.0 / max(dot(tangent, incoming), 1.0e-3);
    return joint;
}

vec3 fromSection(Joint joint, vec2 v, float stretch)
{
    vec3 arm = quaternionRotate(joint.rotation, vec3(v.x, 0.0, v.y));
    return arm + joint.bend * (dot(arm, joint.bend) * (stretch - 1.0));
}

// Emits point i of the section at the joint of this corner of the segment.
void emitPoint(Joint joint, int corner, int i, vec3 direction, float along, float across)
{
    vec3 arm = fromSection(joint, section[i], min(joint.stretch, max_mitre));
    // Stretched as the section is and then seen along the segment, the normal is that of a section which stands
    // straight across the segment: the one that its sides have.
    vec3 normal = fromSection(joint, section_normals[i], joint.stretch);
    normal -= direction * dot(normal, direction);

    vec4 world = vec4(joint.origin + arm, 1.0);
    vec4 eye = view * world;
    gl_Position = projection * eye;
    mat3 frame = lightFrame();
    light_position = frame * eye.xyz;
    light_normal = frame * (mat3(view) * normal); // the view is a rotation and a shift
#ifdef RX_USE_PER_VERTEX_TEX_COORDS
    texture_coords = vec2(along, across);
#endif
    COPY_ITEM(item_in[corner])
    item.place = fencePlace(world);
#ifdef RX_USE_PER_VERTEX_COLOR
#ifdef RX_USE_ELEVATION_COLOR
    item.vertex_color.r = world.z;
#endif
#endif
    EmitVertex();
}

float positionAlong(int corner)
{
#ifdef RX_USE_PER_VERTEX_TEX_COORDS
    if (section_period > 0.0) return path_positions[path_index[corner]] / section_period;
#endif
    return corner == 1 ? 0.0 : 1.0;
}

void main()
{
    int count = min(section_points_count, max_section_points_count);
    int first = gl_InvocationID * edges_per_invocation;
    int last = min(first + edges_per_invocation, count - 1);
    vec3 p[4];
    for (int i = 0; i < 4; ++i)
        p[i] = gl_in[i].gl_Position.xyz;
    vec3 direction = directionOr(p[2] - p[1], vec3(0.0));
    if (first >= last || direction == vec3(0.0)) return;

    Joint start = jointAt(p[0], p[1], p[2]);
    Joint end = jointAt(p[1], p[2], p[3]);
    float along_start = positionAlong(1);
    float along_end = positionAlong(2);
    for (int i = first; i <= last; ++i) {
        float across = float(i) / float(count - 1);
        emitPoint(start, 1, i, direction, along_start, across);
        emitPoint(end, 2, i, direction, along_end, across);
    }
    EndPrimitive();
}
