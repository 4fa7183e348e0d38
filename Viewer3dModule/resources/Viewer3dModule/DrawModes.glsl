// The protocol between a pass, the items that it draws and the stages of their programs.

// What a pass draws: the uniform "draw_mode". Geometry capture has no number here, it never reaches a fragment stage.
const int ordinal_draw = 0;          // colours
const int selection_mask_draw = 1;   // depth and item id, as bytes
const int glue_mask_draw = 2;        // item id and the mark of the layer, as bytes
const int selection_buffer_draw = 3; // one bit an item in a storage buffer, no pixels

// What an item's flags say: the uniform or instance attribute "item_flags".
const int item_normal_flag = -1;
const int item_highlited_flag = -2;
const int item_invisible_flag = -3;

// What is handed on about the item from the vertex stage through all others, in the block "Item": the same fields in
// every program, so that any two stages fit. Uniforms that change with every item are read by the vertex stage only:
// a fragment stage that reads them costs a frame of many items twice the time.
//   color  the item's colour after its flags
//   index  the instance's index within its draw call, 0 in programs that draw no instances
#define ITEM_FIELDS flat vec4 color; flat uvec2 id; flat int flags; flat int index;

// The colour of an item: nothing when it is hidden, the selection colour when it is highlighted, else its own.
vec4 colorFromFlags(int flags, vec4 own_color, vec4 highlight_color)
{
    if (flags == item_invisible_flag) return vec4(0.0);
    return flags == item_highlited_flag ? highlight_color : own_color;
}
