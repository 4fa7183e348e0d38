#pragma once

#include <cstdint>

/// 64-bit identifier of a model element, unique within its project model. 0 means none.
using LONGID = std::int64_t;
