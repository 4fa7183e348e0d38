#pragma once

#include <Viewer3dModule/drawables/ItemDrawing.h>
#include <Viewer3dModule/drawers/ItemRecords.h>
#include <Viewer3dModule/drawers/VertexArena.h>

#include <array>
#include <memory>
#include <vector>

class Drawable3dItem;

/// What a batched drawer keeps of the items of its registry, by their index there: how each is drawn, its
/// record, its vertices. Destroyed while a context of the share group is current.
class BatchedItems
{
public:
    /// How an item is drawn.
    struct Entry
    {
        const Drawable3dItem* item = nullptr; ///< null: not asked yet; not owned
        std::uint32_t drawingRevision = 0;
        std::uint32_t transformRevision = 0;
        bool isHighlighted = false;
        bool isTold = false;  ///< whether the item told what it draws; else nothing of the following counts
        bool hasDots = false; ///< strips of one vertex, which may be points
        bool isIndexed = false;
        bool hasVertexColors = false; ///< that show
        bool isVisible = true;        ///< no colour of its own has an alpha of 0
        bool isOpaque = true;         ///< all of them have an alpha of 1
        ItemDrawing::Kind kind = ItemDrawing::Kind::Strips;
        bool hasOnePen = true; ///< of one width
        float penWidth = 1.0f; ///< pixels, of the first look
        VertexArena* arena = nullptr;
        VertexArena::Place place;      ///< in the arena
        SliceAllocator::Slice records; ///< one a look
        std::vector<ItemDrawing::Stretch> stretches;
    };

    /// The number of items in the registry.
    void resize(std::size_t count);
    /// The item at the index is another one, or draws something else.
    void forget(std::size_t index);
    /// The matrix that is applied after those of items.
    void setBase(const glm::mat4& base);

    /// Brings the entry and the record up to date with the item, which is to be drawn.
    /// @param id  see ItemRecord::item
    const Entry& follow(OpenGLFunctions& gl, std::size_t index, Drawable3dItem& item, const glm::uvec2& id);

    ItemRecords& records() { return m_records; }

private:
    void describe(OpenGLFunctions& gl, std::size_t index, Drawable3dItem& item, const glm::uvec2& id);
    void place(OpenGLFunctions& gl, Entry& entry, const ItemDrawing& drawing);
    void describeLooks(Entry& entry, const std::vector<ItemDrawing::Look>& looks);
    void setRecords(std::size_t index, const std::vector<ItemDrawing::Look>& looks, const glm::uvec2& id);
    void updateRecords(std::size_t index);
    void clear(Entry& entry);

    std::array<std::unique_ptr<VertexArena>, VertexArena::Layout::Count> m_arenas;
    std::vector<Entry> m_entries;
    SliceAllocator m_recordPlaces;
    ItemRecords m_records;
    glm::mat4 m_base = glm::mat4(1.0f);
};
