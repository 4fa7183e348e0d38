// The protocol between a pass, the items that it draws and the stages of their programs.
//#include "shader:Viewer3dFences/FencePlace.glsl"

// What a pass draws: the uniform "draw_mode". Geometry capture has no number here, it never reaches a fragment stage.
const int ordinal_draw = 0;          // colours
const int selection_mask_draw = 1;   // depth and item id, as bytes
const int glue_mask_draw = 2;        // item id and the mark of the layer, as bytes
const int selection_buffer_draw = 3; // one bit an item in a storage buffer, no pixels

// What an item's flags say: the uniform or instance attribute "item_flags".
const int item_normal_flag = -1;
const int item_highlited_flag = -2;
const int item_invisible_flag = -3;

// Where the colour of a surface comes from: the uniform "uColorMode". What the program or the item does not have is
// replaced by the item's colour, and so is any other value.
const int item_color_mode = 0;
const int vertex_color_mode = 1;
const int texture_color_mode = 2;

// What is handed on about the item from the vertex stage through all others, in the block "Item": the same fields in
// every program, so that any two stages fit. Uniforms that change with every item are read by the vertex stage only:
// a fragment stage that reads them costs a frame of many items twice the time.
//   color         the item's colour after its flags
//   index         in passes of the selection buffer the number of the item's bit: the uniform item_index and, in
//                 programs that draw instances, the instance's index within its draw call
//   color_mode    the uniform uColorMode
//   is_lit        1 when the uniform uLightMode is set; only surfaces with normals look at it
//   place         where it lies, as fencePlace() gives it: by it the fence of the view leaves out what is outside.
//                 What keeps its size on the screen has its anchor's place all over
//   vertex_color  with RX_USE_PER_VERTEX_COLOR: the colour of the vertex, interpolated as the place is; where
//                 vertices have none, item_color. Where RX_USE_ELEVATION_COLOR asks for colours by height, too, its
//                 red is the height in the scene instead; the fragment stages that know of this make a colour of it.
#ifdef RX_USE_PER_VERTEX_COLOR
#define VERTEX_COLOR_FIELD vec4 vertex_color;
#define FILL_VERTEX_COLOR item.vertex_color = item_color;
#define COPY_VERTEX_COLOR(from) item.vertex_color = from.vertex_color;
#else
#define VERTEX_COLOR_FIELD
#define FILL_VERTEX_COLOR
#define COPY_VERTEX_COLOR(from)
#endif
#define ITEM_FIELDS flat vec4 color; flat uvec2 id; flat int flags; flat int index; flat int color_mode; \
    flat int is_lit; vec4 place; VERTEX_COLOR_FIELD

// What every vertex stage is told about the item, and how it fills the block with it; the place, and a colour of the
// vertex' own, come after that. A stage that has the item's record, an instance attribute, reads from that what is the
// item's own: item_record.x has the flags, counted down from 0, in bits 0 and 1, the colour mode in bits 2 and 3, and
// bit 4 is set where the item is lit if the view's light is on; y is the item's number in its drawer and z, w its id.
#ifdef ITEM_HAS_RECORD
#define RECORD_FLAGS(record) -int((record).x & 3u)
#define ITEM_COLOR_MODE int((item_record.x >> 2) & 3u)
#define ITEM_IS_LIT (uLightMode && (item_record.x & 16u) != 0u)
#define ITEM_UNIFORMS uniform vec4 selection_color; uniform bool uLightMode = true;
#else
#define ITEM_COLOR_MODE uColorMode
#define ITEM_IS_LIT uLightMode
#define ITEM_UNIFORMS uniform vec4 item_color; uniform vec4 selection_color; uniform int uColorMode = 0; \
    uniform bool uLightMode = true;
#endif
#ifdef RX_NO_SELECTION_BUFFER
#define FIRST_ITEM_INDEX 0
#else
uniform int item_index = 0;
#define FIRST_ITEM_INDEX item_index
#endif
#define FILL_ITEM(own_flags, own_id, own_index) \
    item.color = colorFromFlags(own_flags, item_color, selection_color); \
    item.id = own_id; item.flags = own_flags; item.index = FIRST_ITEM_INDEX + own_index; \
    item.color_mode = ITEM_COLOR_MODE; item.is_lit = ITEM_IS_LIT ? 1 : 0; FILL_VERTEX_COLOR

// How a geometry stage hands the block on, before each vertex that it emits; where that is another place than the
// vertex' it comes from, the place is set after it.
#define COPY_ITEM(from) \
    item.color = from.color; item.id = from.id; item.flags = from.flags; item.index = from.index; \
    item.color_mode = from.color_mode; item.is_lit = from.is_lit; item.place = from.place; \
    COPY_VERTEX_COLOR(from)

// The colour of an item: nothing when it is hidden, the selection colour when it is highlighted, else its own.
vec4 colorFromFlags(int flags, vec4 own_color, vec4 highlight_color)
{
    if (flags == item_invisible_flag) return vec4(0.0);
    return flags == item_highlited_flag ? highlight_color : own_color;
}

// A colour in the shape that a texture's alpha gives to what it covers. Highlighted items keep this shape in every
// program: a leaf that is a picture with holes does not become a board when it is selected, and is not picked by its
// holes then. The alpha of vertices is no shape, that of the selection colour takes its place.
vec4 inShapeOf(vec4 texel, vec4 shown_color)
{
    return vec4(shown_color.rgb, shown_color.a * texel.a);
}

// What a fragment shows without light or texture: the colour of the vertices, if they have one, else the item's.
#ifdef RX_USE_PER_VERTEX_COLOR
#define PLAIN_COLOR colorFromFlags(item.flags, item.vertex_color, item.color)
#else
#define PLAIN_COLOR item.color
#endif

// Whether a place, in clip coordinates, is in view: not so one that is no number, or lies in the camera's own plane.
// OpenGL draws no point whose centre is out of view, but there are drivers that draw it somewhere else when it is wide
// and comes from a geometry stage: those emit only points for which this holds.
bool isInView(vec4 clip)
{
    return clip.w > 0.0 && all(lessThanEqual(abs(clip.xyz), vec3(clip.w)));
}
