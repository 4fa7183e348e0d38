#pragma once

#include <benchmarks/harness/Work.h>

/// What drawing, building, editing, selecting and removing cost an item, of few and of very many.
std::vector<Work> growthWorks();
