#include <Viewer3dModule/drawers/BatchedItems.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// Vertices or indices of an item. Beside the drawing of more a call of its own counts for nothing, and copies
// of them take much memory.
constexpr std::uint32_t mostValues = 20000;

std::int32_t flagsOf(const BatchedItems::Entry& entry)
{
    return entry.isHighlighted ? ItemFlag::Highlighted : ItemFlag::Normal;
}

} // namespace

void BatchedItems::resize(std::size_t count)
{
    for (std::size_t index = count; index < m_entries.size(); ++index)
        clear(m_entries[index]);
    m_entries.resize(count);
}

void BatchedItems::clear(Entry& entry)
{
    if (entry.arena) entry.arena->clear(entry.place);
    m_recordPlaces.giveBack(std::exchange(entry.records, {}));
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
        updateRecords(index);
    }
    return entry;
}

void BatchedItems::describe(OpenGLFunctions& gl, std::size_t index, Drawable3dItem& item,
                            const glm::uvec2& id)
{
    Entry& entry = m_entries[index];
    ItemDrawing drawing;
    entry.isTold =
        item.describeDrawing(drawing) && std::max(drawing.vertexCount, drawing.indexCount) <= mostValues;
    entry.item = &item;
    // Asked afterwards: an item may make its drawing only now.
    entry.drawingRevision = item.drawingRevision();
    entry.transformRevision = item.transformRevision();
    entry.isHighlighted = item.isHighlighted();
    if (!entry.isTold) drawing = ItemDrawing();
    place(gl, entry, drawing);
    describeLooks(entry, drawing.looks);
    setRecords(index, drawing.looks, id);
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
    entry.stretches = drawing.stretches;
    entry.hasDots = drawing.kind == ItemDrawing::Kind::Strips &&
                    std::any_of(drawing.stretches.begin(), drawing.stretches.end(),
                                [](const ItemDrawing::Stretch& stretch) { return stretch.count == 1; });
}

void BatchedItems::describeLooks(Entry& entry, const std::vector<ItemDrawing::Look>& looks)
{
    const auto any = [&looks](auto holds) { return std::any_of(looks.begin(), looks.end(), holds); };
    entry.penWidth = looks.empty() ? 0.0f : looks.front().penWidth;
    entry.hasOnePen = !any([&entry](const ItemDrawing::Look& look) {
        return look.penWidth < entry.penWidth || look.penWidth > entry.penWidth;
    });
    entry.hasVertexColors =
        any([](const ItemDrawing::Look& look) { return look.colorMode != ColorMode::Item; });
    entry.isVisible = !any([](const ItemDrawing::Look& look) { return look.color.alpha() == 0; });
    entry.isOpaque = !any([](const ItemDrawing::Look& look) { return look.color.alphaF() < 1.0; });
}

void BatchedItems::setRecords(std::size_t index, const std::vector<ItemDrawing::Look>& looks,
                              const glm::uvec2& id)
{
    Entry& entry = m_entries[index];
    if (entry.records.count != looks.size()) {
        m_recordPlaces.giveBack(entry.records);
        entry.records = m_recordPlaces.take(static_cast<std::uint32_t>(looks.size()));
        m_records.resize(m_recordPlaces.end());
    }
    std::size_t place = entry.records.first;
    for (const ItemDrawing::Look& look : looks) {
        ItemRecord record;
        record.color = uniforms::vectorOf(look.color);
        record.penWidth = look.penWidth;
        record.item = glm::uvec4(ItemRecord::look(flagsOf(entry), look.colorMode, look.isLit),
                                 static_cast<std::uint32_t>(index), id.x, id.y);
        record.model = m_base * entry.item->getTransform();
        m_records.set(place++, record);
    }
}

void BatchedItems::updateRecords(std::size_t index)
{
    const Entry& entry = m_entries[index];
    for (std::size_t place = entry.records.first; place < entry.records.first + entry.records.count;
         ++place) {
        ItemRecord record = m_records[place];
        record.model = m_base * entry.item->getTransform();
        record.item.x = ItemRecord::withFlags(record.item.x, flagsOf(entry));
        m_records.set(place, record);
    }
}
