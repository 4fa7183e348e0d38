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
