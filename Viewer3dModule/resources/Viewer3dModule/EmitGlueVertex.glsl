// What the geometry stages of the glue programs share: their blocks, and how they emit a vertex. To be included after
// GluePriority.glsl and the layouts of the stage.
//#include "shader:Viewer3dModule/DrawModes.glsl"

in GlueVertex
{
    vec3 real_coords;
    flat uint mask;
}
glue_in[];

out Glue
{
    GLUE_FIELDS
}
glue;

// How much nearer a layer lies than the one below it, in normalised device coordinates: what lies at one place is
// decided by the layers, whatever is drawn first. Beside that place depth decides as ever: a surface that comes nearer
// within the width of a point, or an edge in front of it, covers that side of the point.
const float offset = 0.000001;

// Emits a vertex of a primitive of this layer, all vertices of which get the same coords; its own are those at place.
void emitVertex(vec4 clip, int layer, vec3 coords, vec3 place)
{
    gl_Position = vec4(clip.xy, clip.z - float(layer) * offset * clip.w, clip.w);
    glue.coords = coords;
    glue.place = fencePlace(vec4(place, 1.0));
    glue.priority_layer = layer;
    glue.mask = glue_in[0].mask;
    EmitVertex();
}

// Emits a point, if it is in view, of the size that the vertex stage gave.
void emitPoint(vec4 clip, int layer, vec3 coords)
{
    if (!isInView(clip)) return;
    gl_PointSize = gl_in[0].gl_PointSize;
    emitVertex(clip, layer, coords, coords);
}
