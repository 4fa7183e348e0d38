#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

/// Keeps the books of a row of places, of which stretches are taken and given back in any order. Giving back
/// costs the same however many gaps there are: it is noted, and put into the books when they are next needed,
/// with all else that was given back since. Taking costs the logarithm of the number of gaps.
class VIEWER3DMODULE_EXPORT SliceAllocator
{
public:
    struct Slice
    {
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };

    /// The smallest gap that is large enough, else the end of the row; where nothing is wanted, no places.
    Slice take(std::uint32_t count);
    /// Of a slice that was taken.
    void giveBack(Slice slice);
    /// All places that are taken lie before this one.
    std::uint32_t end();

private:
    using Gap = std::map<std::uint32_t, std::uint32_t>::iterator;
    void settle();
    void addMerged(Slice slice);
    void addGap(std::uint32_t first, std::uint32_t count);
    void removeGap(Gap gap);

    std::map<std::uint32_t, std::uint32_t> m_gaps;                  // counts by first place
    std::set<std::pair<std::uint32_t, std::uint32_t>> m_gapsBySize; // count and first place
    std::vector<Slice> m_givenBack;                                 // and in no gap yet
    std::uint32_t m_end = 0;
    std::uint32_t m_taken = 0; // places
};
