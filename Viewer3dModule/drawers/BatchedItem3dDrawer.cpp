#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawers/BatchedItems.h>
#include <Viewer3dModule/drawers/DrawCommands.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/drawers/OpaquePass.h>
#include <Viewer3dModule/drawers/RecordPass.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <Viewer3dModule/shaders/Uniforms.h>
#include <framework/graphics/InteractiveGraphicsItem.h>

#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <array>
#include <limits>

namespace {

// What one draw call takes. Of pens only what the program takes from a uniform.
struct RunKey
{
    GLenum mode;
    const VertexArena* arena;
    bool isIndexed;
    ProgramColors colors;
    float penWidth;

    bool operator==(const RunKey& other) const
    {
        return mode == other.mode && arena == other.arena && isIndexed == other.isIndexed &&
               colors == other.colors && !(penWidth < other.penWidth || penWidth > other.penWidth);
    }
};

GLenum modeOf(ItemDrawing::Kind kind)
{
    switch (kind) {
    case ItemDrawing::Kind::Points:
        return GL_POINTS;
    case ItemDrawing::Kind::Lines:
        return GL_LINES;
    case ItemDrawing::Kind::Triangles:
        return GL_TRIANGLES;
    default:
        return GL_LINE_STRIP;
    }
}

// The simplest program is worth it in passes of colours, which there are many of.
ProgramColors usualColors(const PaintContext& context)
{
    return context.drawMode == DrawMode::OrdinalDraw ? ProgramColors::VisibleItems : ProgramColors::All;
}

ProgramColors colorsOf(const BatchedItems::Entry& entry, ProgramColors usual, bool isHighlightVisible)
{
    if (entry.hasVertexColors || usual == ProgramColors::All) return ProgramColors::All;
    return (entry.isHighlighted ? isHighlightVisible : entry.isVisible) ? ProgramColors::VisibleItems
                                                                        : ProgramColors::OfItems;
}

bool isOpaque(const BatchedItems::Entry& entry, bool isHighlightOpaque)
{
    return !entry.hasVertexColors && (entry.isHighlighted ? isHighlightOpaque : entry.isOpaque);
}

enum class Way { Together, Alone, NotAtAll };

// How an item is drawn in a pass that takes these primitives.
Way wayOf(const BatchedItems::Entry& entry, std::int32_t primitives, bool takesOnePen)
{
    if (!entry.isTold || (takesOnePen && !entry.hasOnePen)) return Way::Alone;
    const bool withAdjacency = (primitives & PrimitiveBit::Adjacency) != 0;
    const auto ifTaken = [primitives](std::int32_t bit) {
        return (primitives & bit) != 0 ? Way::Together : Way::NotAtAll;
    };
    switch (entry.kind) {
    case ItemDrawing::Kind::Points:
        return ifTaken(PrimitiveBit::Points);
    case ItemDrawing::Kind::Lines:
        return withAdjacency ? Way::NotAtAll : ifTaken(PrimitiveBit::Lines);
    case ItemDrawing::Kind::Triangles:
        return withAdjacency ? Way::NotAtAll : ifTaken(PrimitiveBit::Triangles);
    default:
        break;
    }
    if ((primitives & PrimitiveBit::Lines) == 0 || withAdjacency) return Way::Alone;
    return entry.hasDots && (primitives & PrimitiveBit::Points) != 0 ? Way::Alone : Way::Together;
}

// The commands of an item, in the layout that OpenGL wants.
std::uint32_t appendCommands(std::vector<std::uint32_t>& words, const BatchedItems::Entry& entry)
{
    std::uint32_t commands = 0;
    const std::uint32_t firstVertex = entry.place.vertices.first;
    for (const ItemDrawing::Stretch& stretch : entry.stretches) {
        const std::uint32_t record = entry.records.first + stretch.look;
        if (entry.isIndexed)
            words.insert(words.end(),
                         {stretch.count, 1u, entry.place.indices.first + stretch.first, firstVertex, record});
        else if (entry.kind == ItemDrawing::Kind::Strips && stretch.count < 2)
            continue;
        else
            words.insert(words.end(), {stretch.count, 1u, firstVertex + stretch.first, record});
        ++commands;
    }
    return commands;
}

} // namespace

/// Items that follow one another and are drawn together, or one by one.
struct BatchedItem3dDrawer::Run
{
    bool isTogether;
    RunKey key;
    std::size_t firstItem, itemCount; ///< among those that the pass draws
    std::size_t firstWord;            ///< of the commands
    std::uint32_t commandCount;
    bool isOpaque; ///< all of it
};

struct BatchedItem3dDrawer::Batches
{
    explicit Batches(BatchedItem3dDrawer& owner)
        : passes{{{owner, ProgramColors::All},
                  {owner, ProgramColors::OfItems},
                  {owner, ProgramColors::VisibleItems}}}
    {
    }

    BatchedItems items;
    DrawCommands commands;
    std::array<RecordPass, 3> passes; ///< by ProgramColors
    // of the pass that is being drawn; kept for their memory
    std::vector<std::size_t> drawn; ///< indices of the items that it draws, in order
    std::vector<Run> runs;
    std::vector<std::uint32_t> words; ///< of all commands
    std::vector<LONGID> ids;

    RecordPass& passFor(ProgramColors colors) { return passes[static_cast<std::size_t>(colors)]; }
};

BatchedItem3dDrawer::BatchedItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* defaultProgram)
    : SequentialItem3dDrawer(scene, defaultProgram)
    , m_batches(std::make_unique<Batches>(*this))
{
}

BatchedItem3dDrawer::~BatchedItem3dDrawer() = default;

std::unique_ptr<Item3dDrawer> BatchedItem3dDrawer::clone() const
{
    auto copy = std::make_unique<BatchedItem3dDrawer>(scene(), getProgramToShare());
    copy->setLeastRun(m_leastRun);
    return copy;
}

void BatchedItem3dDrawer::updateItem(int index)
{
    if (index >= 0) m_batches->items.forget(static_cast<std::size_t>(index));
}

void BatchedItem3dDrawer::setLeastRun(int items)
{
    m_leastRun = items;
}

void BatchedItem3dDrawer::drawItems(const PaintContext& context, const Filter& filter)
{
    Batches& batches = *m_batches;
    PaintContext alone = context;
    if (!alone.program) alone.program = getProgramToShare();
    alone.drawer = this;
    RecordPass& mostly = batches.passFor(usualColors(context));
    if (!mostly.begin(alone, isFenced())) {
        SequentialItem3dDrawer::drawItems(context, filter);
        return;
    }
    OpenGLFunctions& gl = *currentGLFunctions();
    plan(gl, mostly, filter);
    batches.items.records().upload(gl, mostly.hasNormals(), context.view);
    if (!batches.words.empty())
        gl.glBindBuffer(GL_DRAW_INDIRECT_BUFFER, batches.commands.bufferOf(gl, batches.words));
    drawRuns(gl, alone);
    gl.glBindBuffer(GL_DRAW_INDIRECT_BUFFER, 0);
}

// Each of the programs is prepared once, when its first run comes.
void BatchedItem3dDrawer::drawRuns(OpenGLFunctions& gl, PaintContext& alone)
{
    Batches& batches = *m_batches;
    const PaintContext plain = alone;
    const PaintContext* last = &batches.passFor(usualColors(alone)).context();
    std::array<const PaintContext*, 4> prepared{last};
    for (const Run& run : batches.runs) {
        RecordPass& pass = batches.passFor(run.key.colors);
        const PaintContext* wanted = run.isTogether ? &pass.context() : &alone;
        if (std::find(prepared.begin(), prepared.end(), wanted) == prepared.end()) {
            if (!(run.isTogether ? pass.begin(plain, isFenced()) : beginPass(alone))) return;
            *std::find(prepared.begin(), prepared.end(), nullptr) = wanted;
        } else if (last != wanted) {
            RecordPass::useAgain(*wanted);
        }
        last = wanted;
        if (run.isTogether)
            drawTogether(gl, pass, run);
        else
            drawAlone(alone, run);
    }
}

void BatchedItem3dDrawer::drawAlone(const PaintContext& context, const Run& run)
{
    itemPass().begin(true);
    for (std::size_t i = run.firstItem; i < run.firstItem + run.itemCount; ++i)
        drawWithUniforms(getItems()[m_batches->drawn[i]], context);
    itemPass().end();
}

// Brings records up to date and finds the runs of the pass.
void BatchedItem3dDrawer::plan(OpenGLFunctions& gl, const RecordPass& pass, const Filter& filter)
{
    Batches& batches = *m_batches;
    batches.drawn.clear();
    batches.runs.clear();
    batches.words.clear();
    const std::vector<Drawable3dItem*>& items = getItems();
    batches.items.resize(items.size());
    batches.items.setBase(getTransform());
    const ProgramColors usual = usualColors(pass.context());
    const View3dSettings* settings = View3dSettings::getInstance();
    const double highlightAlpha = settings ? settings->getSelectedColor().alphaF() : 1.0;
    for (std::size_t index = 0; index < items.size(); ++index) {
        Drawable3dItem& item = *items[index];
        if (!item.isVisible() || (filter && !filter(&item))) continue;
        const BatchedItems::Entry& entry = batches.items.follow(gl, index, item, itemId(item));
        const Way way = wayOf(entry, pass.context().primitives, pass.penWidth() >= 0);
        if (way == Way::NotAtAll) continue;
        RunKey key{0, nullptr, false, ProgramColors::All, 0.0f};
        if (way == Way::Together)
            key = {modeOf(entry.kind), entry.arena, entry.isIndexed,
                   colorsOf(entry, usual, highlightAlpha > 0.0),
                   pass.penWidth() >= 0 ? entry.penWidth : 0.0f};
        if (batches.runs.empty() || !(batches.runs.back().key == key))
            batches.runs.push_back(
                {way == Way::Together, key, batches.drawn.size(), 0, batches.words.size(), 0, true});
        Run& run = batches.runs.back();
        batches.drawn.push_back(index);
        ++run.itemCount;
        run.isOpaque = run.isOpaque && isOpaque(entry, highlightAlpha >= 1.0);
        if (way == Way::Together) run.commandCount += appendCommands(batches.words, entry);
    }
    for (Run& run : batches.runs)
        if (run.itemCount < static_cast<std::size_t>(std::max(m_leastRun, 0))) run.isTogether = false;
}

void BatchedItem3dDrawer::drawTogether(OpenGLFunctions& gl, const RecordPass& pass, const Run& run)
{
    m_drawnTogether += run.itemCount;
    if (run.commandCount == 0) return;
    if (pass.context().drawMode == DrawMode::SelectionBufferDraw) giveIndices(gl, pass, run);
    uniforms::set(gl, pass.penWidth(), run.key.penWidth);

    VertexArrayBinding binding(gl, pass.context().vertexArray);
    run.key.arena->bind(binding);
    m_batches->items.records().bind(gl, pass.hasNormals());
    const auto* commands = reinterpret_cast<const void*>(run.firstWord * sizeof(std::uint32_t));
    const auto count = static_cast<GLsizei>(run.commandCount);
    const OpaquePass opaque(&gl, pass.context().blends && run.isOpaque && pass.showsOwnAlphas());
    if (run.key.isIndexed)
        gl.glMultiDrawElementsIndirect(run.key.mode, GL_UNSIGNED_INT, commands, count, 0);
    else
        gl.glMultiDrawArraysIndirect(run.key.mode, commands, count, 0);
    ItemRecords::unbind(gl);
}

// A selection index for each item from the first to the last of the run; those between that the pass does not
// draw report nothing.
void BatchedItem3dDrawer::giveIndices(OpenGLFunctions& gl, const RecordPass& pass, const Run& run)
{
    IItem3dSelectionProvider* provider = RecordPass::providerOf(pass.context());
    if (!provider) {
        uniforms::set(gl, pass.firstItem(), std::numeric_limits<int>::max()); // no item marks anything
        return;
    }
    const auto begin = m_batches->drawn.begin() + static_cast<std::ptrdiff_t>(run.firstItem);
    const auto end = begin + static_cast<std::ptrdiff_t>(run.itemCount);
    std::vector<LONGID>& ids = m_batches->ids;
    ids.assign(*(end - 1) - *begin + 1, 0);
    for (auto index = begin; index != end; ++index)
        if (const InteractiveGraphicsItem* hostItem = getItems()[*index]->hostItem())
            ids[*index - *begin] = hostItem->getId();
    provider->addItemIds(ids);
    uniforms::set(gl, pass.firstItem(), static_cast<int>(*begin));
}
