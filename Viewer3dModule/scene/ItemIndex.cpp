#include <Viewer3dModule/scene/ItemIndex.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/ItemReach.h>

#include <algorithm>
#include <cmath>

// An item's place is its number in m_boxes; the complement of it, which is below 0, where the item is never
// left out.
namespace {

int numberAt(int place)
{
    return place < 0 ? ~place : place;
}

} // namespace

void ItemIndex::add(Graphics3dItem& item)
{
    const int number = m_boxes.add();
    if (static_cast<std::size_t>(number) >= m_items.size())
        m_items.resize(static_cast<std::size_t>(number) + 1, nullptr);
    m_items[static_cast<std::size_t>(number)] = &item;
    item.m_indexPlace = ~number;
    change(item);
}

void ItemIndex::remove(Drawable3dItem& item)
{
    if (item.m_indexPlace == Drawable3dItem::NoIndexPlace) return;
    const int number = numberAt(item.m_indexPlace);
    m_boxes.remove(number);
    m_items[static_cast<std::size_t>(number)] = nullptr;
    if (item.m_indexWaiting >= 0) m_waiting[static_cast<std::size_t>(item.m_indexWaiting)] = nullptr;
    item.m_indexPlace = Drawable3dItem::NoIndexPlace;
    item.m_indexWaiting = -1;
    ++m_version;
}

void ItemIndex::change(Drawable3dItem& item)
{
    if (item.m_indexPlace == Drawable3dItem::NoIndexPlace) return;
    ++m_version;
    if (item.m_indexWaiting >= 0) return;
    item.m_indexWaiting = static_cast<int>(m_waiting.size());
    m_waiting.push_back(m_items[static_cast<std::size_t>(numberAt(item.m_indexPlace))]);
}

void ItemIndex::changeAll()
{
    for (Graphics3dItem* item : m_items)
        if (item) change(*item);
}

// An item that changes while the boxes are asked for waits for the next time.
void ItemIndex::update()
{
    std::vector<Graphics3dItem*> waiting;
    waiting.swap(m_waiting);
    for (Graphics3dItem* item : waiting)
        if (item) item->m_indexWaiting = -1;
    ItemReach reaches;
    for (Graphics3dItem* item : waiting) {
        if (!item) continue;
        const int number = numberAt(item->m_indexPlace);
        const gmx::BoundingBox box = item->isVisible() ? item->sceneBoundingBox() : gmx::BoundingBox();
        const double reach = std::max(reaches.of(*item), 0.0);
        const bool mayBeLeftOut = box.isValid() && std::isfinite(reach) && reaches.isDrawnByItself(*item);
        m_boxes.set(number, box, mayBeLeftOut ? reach : 0.0);
        item->m_indexPlace = mayBeLeftOut ? number : ~number;
    }
}

ItemIndex::Seen ItemIndex::find(const PictureVolume& volume)
{
    Seen seen;
    seen.m_index = this;
    seen.m_version = m_version; // not that of what changes meanwhile
    update();
    m_boxes.find(volume, seen.m_found);
    return seen;
}

gmx::BoundingBox ItemIndex::visibleBounds()
{
    update();
    return m_boxes.bounds();
}
