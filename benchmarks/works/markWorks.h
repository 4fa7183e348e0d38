#pragma once

#include <benchmarks/harness/Work.h>

/// What is drawn by instances: marks and labels, each an item.
std::vector<Work> markWorks();
