#include <readers/obj/CornerTable.h>

namespace readers {

namespace {

std::uint64_t mix(std::uint64_t value)
{
    value ^= value >> 32;
    value *= 0xd6e8feb86659fd93u;
    value ^= value >> 32;
    value *= 0xd6e8feb86659fd93u;
    return value ^ value >> 32;
}

std::uint64_t hash(const CornerTable::Corner& corner)
{
    const auto bits = [](std::int32_t number) {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(number));
    };
    return mix(mix(bits(corner.position) << 32 | bits(corner.texCoord)) + bits(corner.normal));
}

} // namespace

std::pair<std::uint32_t, bool> CornerTable::insert(const Corner& corner)
{
    if (m_corners.size() * 4 >= m_slots.size() * 3) grow();
    std::uint32_t& slot = m_slots[findSlot(corner)];
    if (slot != 0) return {slot - 1, false};
    m_corners.push_back(corner);
    slot = static_cast<std::uint32_t>(m_corners.size());
    return {slot - 1, true};
}

void CornerTable::grow()
{
    constexpr std::size_t first = 16;
    m_slots.assign(m_slots.empty() ? first : m_slots.size() * 2, 0);
    for (std::size_t i = 0; i < m_corners.size(); ++i)
        m_slots[findSlot(m_corners[i])] = static_cast<std::uint32_t>(i + 1);
}

std::size_t CornerTable::findSlot(const Corner& corner) const
{
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t slot = hash(corner) & mask;; slot = (slot + 1) & mask) {
        if (m_slots[slot] == 0) return slot;
        const Corner& other = m_corners[m_slots[slot] - 1];
        if (other.position == corner.position && other.texCoord == corner.texCoord &&
            other.normal == corner.normal)
            return slot;
    }
}

} // namespace readers
