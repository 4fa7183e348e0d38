// Layers of the glue mask: where several lie at a pixel, the highest number wins.
const int empty_flag = 0;
const int raw_coords_flag = 1;
const int face_flag = 2;
const int face_edge_flag = 3;
const int face_node_flag = 4;
const int cloud_point_flag = 5;
const int edge_flag = 6;
const int mid_node_flag = 7;
const int node_flag = 8;
const int point_item_flag = 9;

// A glue mask is a picture whose pixels say what one can snap to. The programs that draw it run over an item's geometry
// and write four words of 32 bits, each as the four bytes of an attachment; the ids at the same pixels come from the
// item's own program in its glue mode. Coordinates are those of the scene, after the matrix "model", as floats:
//   nodes, points  x, y, z of the vertex (of the middle of the line for mid_node_flag), bit for bit, over the whole
//                  point of pen_width pixels
//   edges          x, y, z of a point of the edge itself, as exactly as it is given, that lies in the pixel or next to
//                  it at most: where the driver samples the line. Lines are one pixel wide
//   raw_coords     x, y, z of the surface at the centre of the pixel
//   faces          the plane a x + b y + c z + 1 = 0 that the face lies in, as a, b, c: the same from both sides.
//                  Planes through the origin, which have no such equation, are taken to pass at 1e-15
// The fourth word tells them apart: the bits of 1.0 for a face, which thus is the plane (a, b, c, 1.0), else the
// complement of the layer's number, which no float that is a number has.

// What a geometry stage of these programs tells the fragment stage.
//   coords          of a node; of an edge's start; a face's plane
//   place           where it lies, as fencePlace() gives it
//   priority_layer  one of the layers above
//   mask            the item's uniform "glue_mask": which layers can be snapped to, one bit each
#define GLUE_FIELDS flat vec3 coords; vec4 place; flat int priority_layer; flat uint mask;

#define GLUE_OUTPUTS \
    layout(location = 0) out vec4 coords_x; layout(location = 1) out vec4 coords_y; \
    layout(location = 2) out vec4 coords_z; layout(location = 3) out vec4 coords_w;

#define WRITE_GLUE(written, layer) \
    coords_x = unpackUnorm4x8(floatBitsToUint((written).x)); \
    coords_y = unpackUnorm4x8(floatBitsToUint((written).y)); \
    coords_z = unpackUnorm4x8(floatBitsToUint((written).z)); \
    coords_w = unpackUnorm4x8((layer) == face_flag ? floatBitsToUint(1.0) : ~uint(layer));

bool isLayerWanted(uint mask, int layer)
{
    return (mask & (1u << uint(layer))) != 0u;
}
