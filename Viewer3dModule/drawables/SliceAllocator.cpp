#include <Viewer3dModule/drawables/SliceAllocator.h>

#include <algorithm>
#include <iterator>

SliceAllocator::Slice SliceAllocator::take(std::uint32_t count)
{
    if (count == 0) return {};
    settle();
    m_taken += count;
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

void SliceAllocator::giveBack(Slice slice)
{
    if (slice.count == 0) return;
    m_taken -= slice.count;
    if (m_taken != 0)
        m_givenBack.push_back(slice);
    else
        *this = SliceAllocator();
}

std::uint32_t SliceAllocator::end()
{
    settle();
    return m_end;
}

// In the order of their places, so that neighbours come one after the other.
void SliceAllocator::settle()
{
    if (m_givenBack.empty()) return;
    std::sort(m_givenBack.begin(), m_givenBack.end(),
              [](const Slice& a, const Slice& b) { return a.first < b.first; });
    Slice stretch = m_givenBack.front();
    for (auto slice = m_givenBack.begin() + 1; slice != m_givenBack.end(); ++slice) {
        if (slice->first == stretch.first + stretch.count) {
            stretch.count += slice->count;
        } else {
            addMerged(stretch);
            stretch = *slice;
        }
    }
    addMerged(stretch);
    m_givenBack.clear();
}

// Neighbouring gaps become one; one at the end is none.
void SliceAllocator::addMerged(Slice slice)
{
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
