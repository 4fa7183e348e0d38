#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace readers {

/// The corners of one mesh, each once: which vertex of the mesh stands for the corner.
class CornerTable
{
public:
    /// Numbers in the file's lists, from 0; -1: none.
    struct Corner
    {
        std::int32_t position;
        std::int32_t texCoord;
        std::int32_t normal;
    };

    /// The number of the corner, in the order in which they first came, and whether it is new.
    std::pair<std::uint32_t, bool> insert(const Corner& corner);

private:
    void grow();
    std::size_t findSlot(const Corner& corner) const;

    std::vector<Corner> m_corners;
    std::vector<std::uint32_t> m_slots; // hashed; 0: free, otherwise the corner's number and 1
};

} // namespace readers
