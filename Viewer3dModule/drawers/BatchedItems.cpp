#include <Viewer3dModule/drawers/BatchedItems.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <algorithm>
#include <cstring>
#include <utility>

void BatchedItems::resize(std::size_t count)
{
    for (std::size_t index = count; index < m_entries.size(); ++index)
        if (m_entries[index].arena) m_entries[index].arena->clear(m_entries[index].place);
    m_entries.resize(count);
    m_records.resize(count);
}

void BatchedItems::forget(std::size_t index)
{
    if (index < m_entries.size()) m_entries[index].item = nullptr;
}

// Bit by bit: what draws items one by one multiplies by this matrix as well.
void BatchedItems::setBase(const glm::mat4& base)
{
    if (std::memcmp(&base, &m_base, sizeof(base)) == 0) return;
    m_base = base;
    for (Entry& entry : m_entries)
        entry.item = nullptr;
}

const BatchedItems::Entry& BatchedItems::follow(OpenGLFunctions& gl, std::size_t index, Drawable3dItem& item,
                                                const glm::uvec2& id)
{
    Entry& entry = m_entries[index];
    if (entry.item != &item || entry.drawingRevision != item.drawingRevision()) {
        describe(gl, index, item, id);
        return entry;
    }
    const bool isHighlighted = item.isHighlighted();
    if (entry.isTold &&
        (entry.transformRevision != item.transformRevision() || entry.isHighlighted != isHighlighted)) {
        entry.transformRevision = item.transformRevision();
        entry.isHighlighted = isHighlighted;
        updateRecord(index);
    }
    return entry;
}

void BatchedItems::describe(OpenGLFunctions& gl, std::size_t index, Drawable3dItem& item,
                            const glm::uvec2& id)
{
    Entry& entry = m_entries[index];
    ItemDrawing drawing;
    entry.isTold = item.describeDrawing(drawing);
    entry.item = &item;
    // Asked afterwards: an item may make its drawing only now.
    entry.drawingRevision = item.drawingRevision();
    entry.transformRevision = item.transformRevision();
    entry.isHighlighted = item.isHighlighted();
    if (!entry.isTold) drawing = ItemDrawing();
    place(gl, entry, drawing);
    if (entry.isTold) setRecord(index, drawing, id);
}

void BatchedItems::place(OpenGLFunctions& gl, Entry& entry, const ItemDrawing& drawing)
{
    const VertexArena::Layout layout = VertexArena::Layout::of(drawing);
    std::unique_ptr<VertexArena>& arena = m_arenas[static_cast<std::size_t>(layout.index())];
    if (!arena) arena = std::make_unique<VertexArena>(layout);
    if (entry.arena && entry.arena != arena.get()) entry.arena->clear(entry.place);
    entry.arena = arena.get();
    arena->fill(gl, entry.place, drawing);
    entry.kind = drawing.kind;
    entry.isIndexed = drawing.indices != 0;
    entry.isVisible = drawing.color.alpha() != 0;
    entry.hasVertexColors = drawing.colorMode == ColorMode::Vertices;
    entry.penWidth = drawing.penWidth;
    entry.stretches = drawing.stretches;
    entry.hasDots = drawing.kind == ItemDrawing::Kind::Strips &&
                    std::any_of(drawing.stretches.begin(), drawing.stretches.end(),
                                [](const ItemDrawing::Stretch& stretch) { return stretch.count == 1; });
}

void BatchedItems::setRecord(std::size_t index, const ItemDrawing& drawing, const glm::uvec2& id)
{
    ItemRecord record;
    record.color = uniforms::vectorOf(drawing.color);
    record.penWidth = drawing.penWidth;
    record.item = glm::uvec4(ItemRecord::look(ItemFlag::Normal, drawing.colorMode, drawing.isLit),
                             static_cast<std::uint32_t>(index), id.x, id.y);
    record.model = m_records[index].model;
    m_records.set(index, record);
    updateRecord(index);
}

void BatchedItems::updateRecord(std::size_t index)
{
    const Entry& entry = m_entries[index];
    ItemRecord record = m_records[index];
    record.model = m_base * entry.item->getTransform();
    record.item.x =
        ItemRecord::withFlags(record.item.x, entry.isHighlighted ? ItemFlag::Highlighted : ItemFlag::Normal);
    m_records.set(index, record);
}
