#include <Viewer3dModule/drawables/SliceAllocator.h>

#include <iterator>

SliceAllocator::Slice SliceAllocator::take(std::uint32_t count)
{
    if (count == 0) return {};
    const auto fitting = m_gapsBySize.lower_bound({count, 0});
    if (fitting == m_gapsBySize.end()) {
        const Slice slice{m_end, count};
        m_end += count;
        return slice;
    }
    const auto [size, first] = *fitting;
    removeGap(m_gaps.find(first));
    if (size > count) addGap(first + count, size - count);
    return {first, count};
}

// Neighbouring gaps become one; one at the end is none.
void SliceAllocator::giveBack(Slice slice)
{
    if (slice.count == 0) return;
    auto next = m_gaps.lower_bound(slice.first);
    if (next != m_gaps.end() && next->first == slice.first + slice.count) {
        slice.count += next->second;
        const Gap merged = next++;
        removeGap(merged);
    }
    if (next != m_gaps.begin()) {
        const Gap before = std::prev(next);
        if (before->first + before->second == slice.first) {
            slice.first = before->first;
            slice.count += before->second;
            removeGap(before);
        }
    }
    if (slice.first + slice.count == m_end)
        m_end = slice.first;
    else
        addGap(slice.first, slice.count);
}

void SliceAllocator::addGap(std::uint32_t first, std::uint32_t count)
{
    m_gaps.emplace(first, count);
    m_gapsBySize.emplace(count, first);
}

void SliceAllocator::removeGap(Gap gap)
{
    m_gapsBySize.erase({gap->second, gap->first});
    m_gaps.erase(gap);
}
