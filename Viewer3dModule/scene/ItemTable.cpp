#include <Viewer3dModule/scene/ItemTable.h>

#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/scene/ItemIndex.h>

void ItemTable::update(const ItemIndex& index, const std::vector<const Item3dDrawer*>& drawers)
{
    std::vector<Revision> revisions;
    for (const Item3dDrawer* drawer : drawers)
        revisions.emplace_back(drawer, drawer->registryRevision());
    if (revisions == m_revisions && index.membership() == m_membership) return;
    m_revisions = std::move(revisions);
    m_membership = index.membership();

    m_numbered.assign(index.size(), Entry());
    m_others.clear();
    for (std::size_t i = 0; i < drawers.size(); ++i)
        for (Drawable3dItem* item : drawers[i]->getItems()) {
            const int number = ItemIndex::numberOf(*item);
            if (number < 0 || m_numbered[static_cast<std::size_t>(number)].item)
                m_others.push_back({item, i});
            else
                m_numbered[static_cast<std::size_t>(number)] = {item, i};
        }
}
