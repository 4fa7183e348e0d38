// The outputs of every fragment stage that draws items, and what the modes put there. To be included after
// DrawModes.glsl.
//#include "shader:Viewer3dFences/Fence.glsl"

layout(location = 0) out vec4 color;
layout(location = 1) out vec4 item_id_low;
layout(location = 2) out vec4 item_id_hi;
layout(location = 3) out vec4 coords_w;

// With RX_COLORS_ONLY a program draws colours and nothing else, without asking what the pass draws: drivers that run
// both sides of a condition would make every fragment of a frame pay for the passes that it is not of.
#ifdef RX_COLORS_ONLY
const int draw_mode = ordinal_draw;
#else
uniform int draw_mode = ordinal_draw;
#endif

// Programs that are not for passes of the selection buffer go without it, with RX_NO_SELECTION_BUFFER: drivers that run
// both sides of a condition would make every fragment pay for it. In such a pass they draw nothing.
#ifndef RX_NO_SELECTION_BUFFER

// Left, bottom, right, top in pixels, inclusive, origin at the lower left. Compared with pixel centres, as the mask is.
uniform vec4 selection_rect = vec4(0.0);

// One bit an item: bit (index mod 32) of word index / 32.
layout(std430, binding = 8) buffer items_selection_buffer
{
    int items_selection_data[];
};
// Word 0: whether there is a mask; then its width, its height and the words of a row; from word 4 on the rows, the top
// one first, the lowest bit of a word leftmost.
layout(std430, binding = 9) readonly buffer mask_selection_buffer
{
    int mask_selection_data[];
};

bool isSelectedByMask(ivec2 pixel)
{
    if (mask_selection_data[0] == 0) return true;
    int width = mask_selection_data[1];
    int height = mask_selection_data[2];
    int words_in_row = mask_selection_data[3];
    int row = height - 1 - pixel.y;
    if (pixel.x < 0 || pixel.x >= width || row < 0 || row >= height) return false;
    int word = mask_selection_data[4 + row * words_in_row + pixel.x / 32];
    return (word & (1 << (pixel.x % 32))) != 0;
}

// Marks the item of this bit as selected when this fragment lies in the selected area.
void markItem(int index)
{
    if (any(lessThan(gl_FragCoord.xy, selection_rect.xy))) return;
    if (any(greaterThan(gl_FragCoord.xy, selection_rect.zw))) return;
    if (!isSelectedByMask(ivec2(gl_FragCoord.xy))) return;
    if (index < 0 || index / 32 >= items_selection_data.length()) return;
    atomicOr(items_selection_data[index / 32], 1 << (index % 32));
}

// The same for item item_index + offset, for stages that do not have the bit from the block Item. Those that call it
// read a uniform that changes with every item.
void set_item_index(int offset)
{
    markItem(item_index + offset);
}

#else

void markItem(int index) {}
void set_item_index(int offset) {}

#endif

vec4 bytesOf(uint word)
{
    return unpackUnorm4x8(word);
}

// Writes one fragment of an item as the pass wants it. index is the number of its bit, and place that of fencePlace();
// glue_coords is what the glue mask gets besides the id. Every output is written in every mode, zero where the mode has
// nothing to say.
void writeItem(vec4 item_color, uvec2 item_id, int index, vec4 place, vec4 glue_coords)
{
    color = vec4(0.0);
    item_id_low = vec4(0.0);
    item_id_hi = vec4(0.0);
    coords_w = vec4(0.0);
    // Where no alpha can be 0, a program without this lets the driver look at depths before it is run.
#ifndef ALL_IS_VISIBLE
    if (item_color.a == 0.0) discard;
#endif
    bool is_outside = isOutsideFence(place);
    if (is_outside && !(fence_gray_preview && draw_mode == ordinal_draw)) discard;
    if (draw_mode == ordinal_draw) {
        color = is_outside ? fencePreviewColor(item_color) : item_color;
    } else if (draw_mode == selection_buffer_draw) {
        if (item_color.a >= 0.5) markItem(index);
        discard;
    } else {
        if (draw_mode == selection_mask_draw) {
            if (item_color.a < 0.5) discard;
            color = bytesOf(floatBitsToUint(gl_FragCoord.z));
        } else {
            coords_w = glue_coords;
        }
        item_id_low = bytesOf(item_id.x);
        item_id_hi = bytesOf(item_id.y);
    }
}
