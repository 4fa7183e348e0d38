#pragma once

#include <benchmarks/harness/Work.h>

/// Polylines of 32 vertices, each an item, 1 and 5 pixels wide.
std::vector<Work> lineWorks();
/// Of many polylines a few in view.
std::vector<Work> zoomWorks();
