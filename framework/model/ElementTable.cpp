#include <framework/model/ElementTable.h>

#include <algorithm>

namespace {

std::size_t placeOf(LONGID id, std::size_t span)
{
    return static_cast<std::uint64_t>(id) % span;
}

} // namespace

CModelElement* ElementTable::find(LONGID id) const
{
    const auto found = m_stretches.find(stretchOf(id));
    return found == m_stretches.end() ? nullptr : found->second[placeOf(id, span)];
}

bool ElementTable::add(LONGID id, CModelElement& element)
{
    Stretch& stretch = m_stretches.emplace(stretchOf(id), Stretch{}).first->second;
    CModelElement*& place = stretch[placeOf(id, span)];
    if (place) return false;
    place = &element;
    return true;
}

void ElementTable::remove(LONGID id)
{
    const auto found = m_stretches.find(stretchOf(id));
    if (found == m_stretches.end()) return;
    Stretch& stretch = found->second;
    stretch[placeOf(id, span)] = nullptr;
    if (std::all_of(stretch.begin(), stretch.end(), [](const CModelElement* element) { return !element; }))
        m_stretches.erase(found);
}
