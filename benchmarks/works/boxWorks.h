#pragma once

#include <benchmarks/harness/Work.h>

/// Lit boxes, each an item.
std::vector<Work> boxWorks();
