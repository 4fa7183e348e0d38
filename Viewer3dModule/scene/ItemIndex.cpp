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
    item.m_indexPlace = ~m_boxes.add();
    ++m_membership;
    change(item);
}

void ItemIndex::remove(Graphics3dItem& item)
{
    Drawable3dItem& drawable = item;
    if (drawable.m_indexPlace == Drawable3dItem::NoIndexPlace) return;
    const int number = numberAt(drawable.m_indexPlace);
    m_boxes.remove(number);
    setLimited(drawable, false);
    m_alwaysSeen.erase(number);
    ++m_membership;
    if (drawable.m_indexWaiting >= 0) m_waiting[static_cast<std::size_t>(drawable.m_indexWaiting)] = nullptr;
    drawable.m_indexPlace = Drawable3dItem::NoIndexPlace;
    drawable.m_indexWaiting = -1;
    ++m_version;
}

void ItemIndex::change(Drawable3dItem& item)
{
    if (item.m_indexPlace == Drawable3dItem::NoIndexPlace) return;
    ++m_version;
    if (item.m_indexWaiting >= 0) return;
    item.m_indexWaiting = static_cast<int>(m_waiting.size());
    m_waiting.push_back(static_cast<Graphics3dItem*>(&item)); // no others are added
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
        const auto reach = static_cast<float>(std::max(reaches.of(*item), 0.0));
        const bool mayBeLeftOut = box.isValid() && std::isfinite(reach) && reaches.isDrawnByItself(*item);
        m_boxes.set(number, box, mayBeLeftOut ? reach : 0.0f);
        setLimited(*item, mayBeLeftOut);
        if (item->isVisible() && !mayBeLeftOut && reaches.isDrawnByItself(*item))
            m_alwaysSeen.insert(number);
        else
            m_alwaysSeen.erase(number);
    }
}

void ItemIndex::setLimited(Drawable3dItem& item, bool limited)
{
    const bool wasLimited = item.m_indexPlace >= 0;
    if (limited == wasLimited) return;
    item.m_indexPlace = ~item.m_indexPlace;
    m_limitedCount = limited ? m_limitedCount + 1 : m_limitedCount - 1;
}

bool ItemIndex::mayLeaveOut()
{
    update();
    return m_limitedCount != 0;
}

ItemIndex::Seen ItemIndex::find(const PictureVolume& volume)
{
    Seen seen;
    seen.m_index = this;
    seen.m_version = m_version; // not that of what changes meanwhile
    update();
    m_boxes.find(volume, seen.m_found);
    for (const int number : m_alwaysSeen)
        seen.m_found[static_cast<std::size_t>(number)] = 1;
    return seen;
}

int ItemIndex::numberOf(const Drawable3dItem& item)
{
    return item.m_indexPlace == Drawable3dItem::NoIndexPlace ? -1 : numberAt(item.m_indexPlace);
}

gmx::BoundingBox ItemIndex::visibleBounds()
{
    update();
    return m_boxes.bounds();
}
