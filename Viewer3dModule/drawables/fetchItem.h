#pragma once

#include <cstddef>

class Drawable3dItem;

/// Has the processor fetch an item, which may lie anywhere in memory, while it is at work on others. Null is
/// fetched as well as anything.
inline void fetchItem([[maybe_unused]] const Drawable3dItem* item)
{
#if defined(__GNUC__)
    constexpr std::size_t bytes = 512; // what is its own of a subclass, too, if that is not large
    const char* first = reinterpret_cast<const char*>(item);
    for (std::size_t offset = 0; offset < bytes; offset += 64)
        __builtin_prefetch(first + offset);
#endif
}
