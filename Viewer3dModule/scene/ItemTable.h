#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class Drawable3dItem;
class Item3dDrawer;
class ItemIndex;

/// The items of some drawers by their numbers in a scene's index: who has found a few of them there need not
/// walk the registries. It is made anew when it is asked for after items came or went.
class ItemTable
{
public:
    /// An item, not owned, and the place of its drawer in the list.
    struct Entry
    {
        Drawable3dItem* item = nullptr;
        std::size_t drawer = 0;
    };

    void update(const ItemIndex& index, const std::vector<const Item3dDrawer*>& drawers);

    /// The entry of a number of the index; one without an item where none of the drawers has it.
    Entry at(std::size_t number) const { return number < m_numbered.size() ? m_numbered[number] : Entry(); }
    /// Those that the index does not have.
    const std::vector<Entry>& others() const { return m_others; }

private:
    using Revision = std::pair<const Item3dDrawer*, std::uint64_t>;

    std::vector<Entry> m_numbered;
    std::vector<Entry> m_others;
    std::vector<Revision> m_revisions;
    std::uint64_t m_membership = 0;
};
