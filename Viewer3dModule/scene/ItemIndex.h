#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/scene/BoxTree.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <unordered_set>
#include <vector>

class Graphics3dItem;
class PictureVolume;

/// The items of a scene's elements by where they lie, for whoever asks which of them a picture shows. It
/// takes an item's box when it is next asked after the item was added or has changed, so that an item that
/// does not change costs nothing.
class ItemIndex
{
public:
    /// Which items may be seen, as of the moment it was made.
    class Seen
    {
    public:
        /// False only for an item that lies wholly out of sight. Items that are never left out are seen:
        /// those that stand for no element, that have no box or an infinite reach, captions and labels, and
        /// those that are not drawn by themselves (ItemReach); and so are all once the index has changed.
        bool isSeen(const Drawable3dItem& item) const
        {
            const int place = item.m_indexPlace;
            return place < 0 || !isValid() || m_found[static_cast<std::size_t>(place)] != 0;
        }
        /// Whether an item is seen because its box and reach say so.
        bool isSeenByBox(const Drawable3dItem& item) const
        {
            const int place = item.m_indexPlace;
            return place >= 0 && isValid() && m_found[static_cast<std::size_t>(place)] != 0;
        }
        /// Whether the index has not changed since: then there is a number for every item that it has.
        bool isValid() const { return m_index && m_version == m_index->m_version; }
        /// Calls use(number) for the visible items that are seen, in ascending order; see numberOf. Those
        /// whose drawers do not draw them one by one are among them only where their boxes say so.
        template <typename Use>
        void forEach(Use use) const
        {
            std::size_t number = 0;
            while (number < m_found.size()) {
                std::uint64_t eight = 1;
                if (number + sizeof(eight) <= m_found.size())
                    std::memcpy(&eight, &m_found[number], sizeof(eight));
                if (eight == 0) {
                    number += sizeof(eight);
                    continue;
                }
                if (m_found[number] != 0) use(number);
                ++number;
            }
        }

    private:
        friend class ItemIndex;

        const ItemIndex* m_index = nullptr;
        std::uint64_t m_version = 0;
        std::vector<std::uint8_t> m_found;
    };

    ItemIndex() = default;
    ItemIndex(const ItemIndex&) = delete;
    ItemIndex& operator=(const ItemIndex&) = delete;

    /// Takes an item, not owned; it is removed before it is destroyed.
    void add(Graphics3dItem& item);
    void remove(Graphics3dItem& item);
    /// The item's box, reach, drawer or visibility may have changed. Nothing for items that are not here.
    void change(Drawable3dItem& item);

    Seen find(const PictureVolume& volume);
    /// Whether there is any item now that may be left out of a picture.
    bool mayLeaveOut();

    /// The item's number, which it keeps until it is removed; -1 for items that are not here. All numbers are
    /// below size().
    static int numberOf(const Drawable3dItem& item);
    std::size_t size() const { return m_boxes.size(); }
    /// Another number whenever an item came or went.
    std::uint64_t membership() const { return m_membership; }

    /// The box of all visible items; null without any.
    gmx::BoundingBox visibleBounds();

private:
    void update();
    /// Whether the item, which is here, may be left out.
    void setLimited(Drawable3dItem& item, bool limited);

    BoxTree m_boxes;
    std::vector<Graphics3dItem*> m_waiting; // for their boxes to be taken; null where it was removed
    std::unordered_set<int> m_alwaysSeen;   // numbers of visible items that are drawn one by one
    std::size_t m_limitedCount = 0;
    std::uint64_t m_version = 0;
    std::uint64_t m_membership = 0;
};
