#include <Viewer3dModule/drawers/MultiGlyphItem3dDrawer.h>

#include <Viewer3dModule/drawables/IconTexture.h>
#include <Viewer3dModule/drawables/vertex_attributes.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/drawers/itemFlag.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace {

constexpr double mostStale = 0.25; // of all records

/// Locations in PerGlyphCaption.vertex.
struct GlyphAttribute
{
    static constexpr unsigned int Position = 0;
    static constexpr unsigned int Height = 1;
    static constexpr unsigned int Offset = 2;
    static constexpr unsigned int Item = 3;
    static constexpr unsigned int Flags = 5;
    static constexpr unsigned int Id = 6;
};

QOpenGLShaderProgram* createProgram(Scene3d* scene)
{
    if (!scene) return nullptr;
    return scene->createProgram({QStringLiteral("shader:Viewer3dModule/PerGlyphCaption.vertex.glsl"),
                                 QStringLiteral("shader:Viewer3dModule/PerGlyphCaption.geom.glsl"),
                                 QStringLiteral("shader:Viewer3dModule/texture.fragment.glsl")},
                                {"RX_USE_INSTANCED_DRAW", "RX_USE_TEXTURE_AS_BITMAP"}, {});
}

// The anchor of a label that is not scaled lies at a corner of pixels.
bool isTexelAPixel(const MultiGlyphItem3dDrawer::Glyph& glyph)
{
    return !(glyph.height > 0.0f) && glyph.offset == glm::floor(glyph.offset);
}

std::size_t slotOf(std::int32_t index)
{
    return static_cast<std::size_t>(index);
}

} // namespace

MultiGlyphItem3dDrawer::MultiGlyphItem3dDrawer(Scene3d* scene)
    : MultiGlyphItem3dDrawer(scene, createProgram(scene))
{
}

MultiGlyphItem3dDrawer::MultiGlyphItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* program)
    : Item3dDrawer(scene)
    , m_program(program)
{
    setOwnsItemUniforms(true);
}

MultiGlyphItem3dDrawer::~MultiGlyphItem3dDrawer() = default;

// Null for what stands for no element: it has no label.
Graphics3dItem* MultiGlyphItem3dDrawer::graphicsItem(int index) const
{
    return dynamic_cast<Graphics3dItem*>(getItems()[slotOf(index)]);
}

void MultiGlyphItem3dDrawer::updateItem(int index)
{
    m_needsUpdate = true;
    const std::size_t itemCount = getItems().size();
    while (m_ranges.size() > itemCount) {
        m_staleGlyphs += m_ranges.back().count;
        m_ranges.pop_back();
        m_orderChanged = true;
    }
    if (index < 0 || slotOf(index) >= itemCount) return;
    Graphics3dItem* item = graphicsItem(index);
    place(index, item ? getGlyphCount(item) : 0);
    updateGlyphs(index);
}

void MultiGlyphItem3dDrawer::growRecords(std::int32_t count)
{
    const std::size_t size = m_glyphs.size() + slotOf(count);
    m_glyphs.resize(size);
    m_ids.resize(size);
    m_flags.resize(size);
    m_textures.resize(size);
}

// Finds room for so many glyphs of the item: none yet, enough where it is, or new room at the end.
void MultiGlyphItem3dDrawer::place(int index, std::int32_t count)
{
    const auto end = static_cast<std::int32_t>(m_glyphs.size());
    if (slotOf(index) >= m_ranges.size()) {
        m_ranges.resize(slotOf(index) + 1, Range{end, 0});
        growRecords(count);
        return;
    }
    Range& range = m_ranges[slotOf(index)];
    if (count <= range.count) {
        m_staleGlyphs += range.count - count;
        return;
    }
    m_staleGlyphs += range.count;
    range = {end, count};
    growRecords(count);
    m_orderChanged = true;
}

void MultiGlyphItem3dDrawer::updateGlyphs(int index)
{
    m_needsUpdate = true;
    Range& range = m_ranges[slotOf(index)];
    Graphics3dItem* item = graphicsItem(index);
    const std::int32_t count = item ? getGlyphCount(item) : 0;
    if (count != range.count) m_orderChanged = true;
    range.count = count;
    if (count == 0) return;
    const glm::vec3 anchor = getAnchor(item);
    const float height = getGlyphHeight(item);
    GlyphList list = getGlyphs(item);
    list.resize(slotOf(count));
    for (std::size_t j = 0; j < list.size(); ++j) {
        const std::size_t record = slotOf(range.first) + j;
        m_glyphs[record] = {anchor, height, list[j].first, index};
        m_ids[record] = item->getId();
        if (m_textures[record] == list[j].second) continue;
        m_textures[record] = std::move(list[j].second);
        m_orderChanged = true;
    }
}

void MultiGlyphItem3dDrawer::compressBuffers()
{
    const std::vector<Range> oldRanges = std::move(m_ranges);
    const std::vector<std::int32_t> oldFlags = std::move(m_flags);
    m_staleGlyphs = 0;
    m_glyphs.clear();
    m_ids.clear();
    m_flags.clear();
    m_textures.clear();
    m_ranges.clear();
    m_orderChanged = true;
    m_needsUpdate = true;
    const std::size_t slots = std::min(oldRanges.size(), getItems().size());
    for (std::size_t slot = 0; slot < slots; ++slot) {
        const auto index = static_cast<int>(slot);
        Graphics3dItem* item = graphicsItem(index);
        place(index, item ? getGlyphCount(item) : 0);
        updateGlyphs(index);
        if (oldRanges[slot].count == 0) continue;
        const Range range = m_ranges[slot];
        std::fill_n(m_flags.begin() + range.first, range.count, oldFlags[slotOf(oldRanges[slot].first)]);
    }
}

void MultiGlyphItem3dDrawer::setItemFlag(int index, int flag)
{
    if (index < 0 || slotOf(index) >= m_ranges.size()) return;
    const Range range = m_ranges[slotOf(index)];
    if (range.count > 0 && m_flags[slotOf(range.first)] == flag) return; // the first one stands for all
    std::fill_n(m_flags.begin() + range.first, range.count, flag);
    m_flagsChanged = true;
}

void MultiGlyphItem3dDrawer::findFlags(const Filter& filter)
{
    const std::vector<Drawable3dItem*>& items = getItems();
    for (std::size_t slot = 0; slot < items.size(); ++slot)
        setItemFlag(static_cast<int>(slot), itemFlag(*items[slot], filter));
}

void MultiGlyphItem3dDrawer::update(OpenGLFunctions& gl)
{
    if (m_staleGlyphs > mostStale * static_cast<double>(m_glyphs.size())) compressBuffers();
    m_glyphBuffer.upload(gl, m_glyphs, GL_DYNAMIC_DRAW);
    m_idBuffer.upload(gl, m_ids, GL_DYNAMIC_DRAW);
    m_isTexelAPixel = std::all_of(m_glyphs.begin(), m_glyphs.end(), isTexelAPixel);
    updateFlags(gl);
    m_needsUpdate = false;
}

void MultiGlyphItem3dDrawer::updateFlags(OpenGLFunctions& gl)
{
    m_flagBuffer.upload(gl, m_flags, GL_DYNAMIC_DRAW);
    m_flagsChanged = false;
}

template <class Use>
void MultiGlyphItem3dDrawer::forEachLiveRecord(const Use& use) const
{
    for (const Range& range : m_ranges)
        for (std::int32_t record = range.first; record < range.first + range.count; ++record)
            use(record);
}

// Textures in the order in which the registry shows them first, so that a picture does not depend on where
// they lie in memory.
void MultiGlyphItem3dDrawer::updateOrderedBuffer(OpenGLFunctions& gl)
{
    std::unordered_map<const IconTexture*, std::size_t> runOf;
    m_runs.clear();
    forEachLiveRecord([&](std::int32_t record) {
        const auto [entry, isNew] = runOf.emplace(m_textures[slotOf(record)].get(), m_runs.size());
        if (isNew) m_runs.push_back({record, 0});
        ++m_runs[entry->second].count;
    });
    std::vector<std::int32_t> ends; // where the next record of each run goes
    std::int32_t size = 0;
    for (const Run& run : m_runs) {
        ends.push_back(size);
        size += run.count;
    }
    std::vector<std::int32_t> order(slotOf(size));
    forEachLiveRecord([&](std::int32_t record) {
        order[slotOf(ends[runOf[m_textures[slotOf(record)].get()]]++)] = record;
    });
    m_indexBuffer.upload(gl, order, GL_DYNAMIC_DRAW);
    m_orderChanged = false;
}

void MultiGlyphItem3dDrawer::draw(const PaintContext& context, Filter filter)
{
    if (getItems().empty() || context.drawMode == DrawMode::GlueMaskDraw ||
        context.drawMode == DrawMode::GeometryCapture || (context.primitives & PrimitiveBit::Points) == 0)
        return;
    PaintContext pass = context;
    pass.program = m_program;
    pass.drawer = this;
    if (!prepareProgram(pass)) return;
    reportIds(pass);
    findFlags(filter);
    OpenGLFunctions* gl = currentGLFunctions();
    if (m_needsUpdate)
        update(*gl);
    else if (m_flagsChanged)
        updateFlags(*gl);
    if (m_orderChanged) updateOrderedBuffer(*gl);
    uniforms::set(*gl, itemUniforms().itemColor, m_color);
    drawRuns(*gl, pass);
    m_program->release();
}

// A glyph's item is the index of its item's identifier among these.
void MultiGlyphItem3dDrawer::reportIds(const PaintContext& context)
{
    if (context.drawMode != DrawMode::SelectionBufferDraw) return;
    if (!scene()->isHasItemSelectionProvider()) return;
    std::vector<LONGID> ids;
    ids.reserve(getItems().size());
    for (const Drawable3dItem* item : getItems())
        ids.push_back(item->hostItem() ? item->hostItem()->getId() : 0);
    scene()->getItemSelectionProvider()->addItemIds(ids);
}

void MultiGlyphItem3dDrawer::drawRuns(OpenGLFunctions& gl, const PaintContext& context)
{
    bind(context.vertexArray);
    gl.glBindVertexArray(context.vertexArray);
    gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_indexBuffer.name());
    gl.glActiveTexture(GL_TEXTURE0);
    if (m_isTexelAPixel) m_sampler.bind(gl, 0);
    std::uintptr_t first = 0;
    for (const Run& run : m_runs) {
        const IconTexture* texture = m_textures[slotOf(run.texture)].get();
        if (texture && run.count > 0) {
            gl.glBindTexture(GL_TEXTURE_2D, texture->getTextureId());
            gl.glDrawElements(GL_POINTS, run.count, GL_UNSIGNED_INT,
                              reinterpret_cast<const void*>(first * sizeof(std::uint32_t)));
        }
        first += slotOf(run.count);
    }
    gl.glBindSampler(0, 0);
    gl.glBindTexture(GL_TEXTURE_2D, 0);
    gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    gl.glBindVertexArray(0);
    unbind(context.vertexArray);
}

void MultiGlyphItem3dDrawer::bind(unsigned int vertexArray)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    constexpr int stride = sizeof(Glyph);
    gl->glBindVertexArray(vertexArray);
    vertex_attributes::setFloats(*gl, GlyphAttribute::Position, m_glyphBuffer,
                                 {3, stride, offsetof(Glyph, position), 0});
    vertex_attributes::setFloats(*gl, GlyphAttribute::Height, m_glyphBuffer,
                                 {1, stride, offsetof(Glyph, height), 0});
    vertex_attributes::setFloats(*gl, GlyphAttribute::Offset, m_glyphBuffer,
                                 {2, stride, offsetof(Glyph, offset), 0});
    vertex_attributes::setIntegers(*gl, GlyphAttribute::Item, m_glyphBuffer,
                                   {1, stride, offsetof(Glyph, item), 0});
    vertex_attributes::setIntegers(*gl, GlyphAttribute::Flags, m_flagBuffer, {1, 0, 0, 0});
    vertex_attributes::setUnsignedIntegers(*gl, GlyphAttribute::Id, m_idBuffer, {2, 0, 0, 0});
    gl->glBindVertexArray(0);
}

void MultiGlyphItem3dDrawer::unbind(unsigned int vertexArray)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    gl->glBindVertexArray(vertexArray);
    for (const unsigned int location :
         {GlyphAttribute::Position, GlyphAttribute::Height, GlyphAttribute::Offset, GlyphAttribute::Item,
          GlyphAttribute::Flags, GlyphAttribute::Id})
        vertex_attributes::disable(*gl, location);
    gl->glBindVertexArray(0);
}
