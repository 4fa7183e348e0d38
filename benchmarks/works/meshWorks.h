#pragma once

#include <benchmarks/harness/Work.h>

/// One large mesh, and one large set of points.
std::vector<Work> meshWorks();
/// The depth map of a large mesh.
std::vector<Work> depthWorks();
