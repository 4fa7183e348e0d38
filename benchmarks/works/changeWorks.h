#pragma once

#include <benchmarks/harness/Work.h>

/// One item of many changes: what that costs beside a frame in which nothing did.
std::vector<Work> changeWorks();
