#pragma once

#include <benchmarks/harness/Work.h>

/// Starting, building, editing, and what an item takes of memory.
std::vector<Work> lifeWorks();
