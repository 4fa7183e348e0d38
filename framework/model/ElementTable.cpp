#include <framework/model/ElementTable.h>

namespace {

std::size_t placeOf(LONGID id, std::size_t span)
{
    return static_cast<std::uint64_t>(id) % span;
}

} // namespace

CModelElement* ElementTable::find(LONGID id) const
{
    const auto found = m_stretches.find(stretchOf(id));
    return found == m_stretches.end() ? nullptr : found->second.elements[placeOf(id, span)];
}

bool ElementTable::add(LONGID id, CModelElement& element)
{
    Stretch& stretch = m_stretches[stretchOf(id)];
    CModelElement*& place = stretch.elements[placeOf(id, span)];
    if (place) return false;
    place = &element;
    ++stretch.count;
    return true;
}

void ElementTable::remove(LONGID id)
{
    const auto found = m_stretches.find(stretchOf(id));
    if (found == m_stretches.end()) return;
    CModelElement*& place = found->second.elements[placeOf(id, span)];
    if (!place) return;
    place = nullptr;
    if (--found->second.count == 0) m_stretches.erase(found);
}
