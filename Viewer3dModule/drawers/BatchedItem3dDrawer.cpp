#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawers/BatchedItems.h>
#include <Viewer3dModule/drawers/DrawCommands.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <framework/graphics/InteractiveGraphicsItem.h>

#include <QtCore/QVariant>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <limits>

namespace {

// What one draw call takes. Of pens only what the program takes from a uniform.
struct RunKey
{
    GLenum mode;
    const VertexArena* arena;
    bool isIndexed;
    float penWidth;

    bool operator==(const RunKey& other) const
    {
        return mode == other.mode && arena == other.arena && isIndexed == other.isIndexed &&
               !(penWidth < other.penWidth || penWidth > other.penWidth);
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

enum class Way { Together, Alone, NotAtAll };

// How an item that told what it draws is drawn in a pass that takes these primitives.
Way wayOf(const BatchedItems::Entry& entry, std::int32_t primitives)
{
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
std::uint32_t appendCommands(std::vector<std::uint32_t>& words, const BatchedItems::Entry& entry,
                             std::uint32_t record)
{
    std::uint32_t commands = 0;
    const std::uint32_t firstVertex = entry.place.vertices.first;
    for (const ItemDrawing::Stretch& stretch : entry.stretches) {
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

// The provider that items of the pass report to; null where they report to none.
IItem3dSelectionProvider* providerOf(const PaintContext& context)
{
    Scene3d* scene = context.drawer->scene();
    if (context.drawMode != DrawMode::SelectionBufferDraw || !scene || !scene->isHasItemSelectionProvider())
        return nullptr;
    IItem3dSelectionProvider* provider = scene->getItemSelectionProvider();
    return provider->bindProgram(context) ? provider : nullptr;
}

// Goes on with a prepared program after another one was in use.
void useAgain(const PaintContext& context)
{
    context.program->bind();
    providerOf(context);
}

} // namespace

/// A pass with a program that reads records: the other one that a frame's pass is made of, with uniforms of
/// its own.
class BatchedItem3dDrawer::RecordPass : public Item3dDrawer
{
public:
    explicit RecordPass(BatchedItem3dDrawer& owner)
        : Item3dDrawer(owner.scene())
    {
        setParentDrawer(&owner);
        setReadsRecords(true);
    }
    void draw(const PaintContext&, Filter) override {}
    std::unique_ptr<Item3dDrawer> clone() const override { return nullptr; }

    /// False when items are to be drawn one by one.
    bool begin(const PaintContext& passContext, bool isLimitedByFence);

    PaintContext context;
    bool hasNormals = false; ///< whether records need normal matrices
    int penWidth = -1;       ///< uniforms
    int firstRecord = -1;

private:
    static bool readsNothingElse(const QOpenGLShaderProgram& program);
};

bool BatchedItem3dDrawer::RecordPass::begin(const PaintContext& passContext, bool isLimitedByFence)
{
    context = passContext;
    OpenGLFunctions* gl = currentGLFunctions();
    QOpenGLShaderProgram* plain = context.program;
    if (!gl || !plain || !plain->isLinked() || context.drawMode == DrawMode::GeometryCapture) return false;
    ProgramVariant records;
    records.readsRecords = true;
    if (&findProgramVariant(*plain, records) == plain) return false;
    setInsideFence(!isLimitedByFence);
    if (!prepareProgram(context) || !readsNothingElse(*context.program)) return false;
    const QVariant primitives = context.program->property("primitives");
    if (primitives.isValid()) context.primitives = primitives.toInt();
    setShaderLightMode(true);
    for (const int plainLook :
         {itemUniforms().texture0, itemUniforms().filledTextureBack, itemUniforms().materialMode})
        uniforms::set(*gl, plainLook, 0);
    hasNormals = context.program->attributeLocation("normalMatrix") >= 0;
    penWidth = itemUniforms().penWidth;
    firstRecord = context.program->uniformLocation("first_record");
    return true;
}

// Programs have stages after the first that may want to know more of an item than is handed on to them.
bool BatchedItem3dDrawer::RecordPass::readsNothingElse(const QOpenGLShaderProgram& program)
{
    const int others[] = {program.uniformLocation("model"),      program.uniformLocation("normalMatrix"),
                          program.uniformLocation("item_color"), program.uniformLocation("item_id"),
                          program.uniformLocation("item_flags"), program.uniformLocation("uColorMode"),
                          program.uniformLocation("glue_mask"),  program.uniformLocation("u_dashSize")};
    return program.attributeLocation("model") >= 0 &&
           std::none_of(std::begin(others), std::end(others), [](int location) { return location >= 0; });
}

/// Items that follow one another and are drawn together, or one by one.
struct BatchedItem3dDrawer::Run
{
    bool isTogether;
    RunKey key;
    std::size_t firstItem, itemCount; ///< among those that the pass draws
    std::size_t firstWord;            ///< of the commands
    std::uint32_t commandCount;
};

struct BatchedItem3dDrawer::Batches
{
    explicit Batches(BatchedItem3dDrawer& owner)
        : pass(owner)
    {
    }

    BatchedItems items;
    DrawCommands commands;
    RecordPass pass;
    // of the pass that is being drawn; kept for their memory
    std::vector<std::size_t> drawn; ///< indices of the items that it draws, in order
    std::vector<Run> runs;
    std::vector<std::uint32_t> words; ///< of all commands
    std::vector<LONGID> ids;
};

BatchedItem3dDrawer::BatchedItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* defaultProgram)
    : SequentialItem3dDrawer(scene, defaultProgram)
    , m_batches(std::make_unique<Batches>(*this))
{
}

BatchedItem3dDrawer::~BatchedItem3dDrawer() = default;

std::unique_ptr<Item3dDrawer> BatchedItem3dDrawer::clone() const
{
    auto copy = std::make_unique<BatchedItem3dDrawer>(scene(), getDefaultProgram());
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
    if (!alone.program) alone.program = getDefaultProgram();
    alone.drawer = this;
    if (!batches.pass.begin(alone, isFenced())) {
        SequentialItem3dDrawer::drawItems(context, filter);
        return;
    }
    OpenGLFunctions& gl = *currentGLFunctions();
    plan(gl, batches.pass, filter);
    batches.items.records().upload(gl, batches.pass.hasNormals, batches.pass.context.view);
    if (!batches.words.empty())
        gl.glBindBuffer(GL_DRAW_INDIRECT_BUFFER, batches.commands.bufferOf(gl, batches.words));

    bool isPrepared = false;
    const QOpenGLShaderProgram* inUse = batches.pass.context.program;
    for (const Run& run : batches.runs) {
        PaintContext& wanted = run.isTogether ? batches.pass.context : alone;
        if (!run.isTogether && !isPrepared) {
            if (!beginPass(alone)) break;
            isPrepared = true;
        } else if (wanted.program != inUse) {
            useAgain(wanted);
        }
        inUse = wanted.program;
        if (run.isTogether) {
            if (run.commandCount != 0) drawRun(gl, batches.pass, run);
            m_drawnTogether += run.itemCount;
            continue;
        }
        for (std::size_t i = run.firstItem; i < run.firstItem + run.itemCount; ++i)
            drawWithUniforms(getItems()[batches.drawn[i]], alone);
    }
    gl.glBindBuffer(GL_DRAW_INDIRECT_BUFFER, 0);
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
    for (std::size_t index = 0; index < items.size(); ++index) {
        Drawable3dItem& item = *items[index];
        if (!item.isVisible() || (filter && !filter(&item))) continue;
        const BatchedItems::Entry& entry = batches.items.follow(gl, index, item, itemId(item));
        const Way way = entry.isTold ? wayOf(entry, pass.context.primitives) : Way::Alone;
        if (way == Way::NotAtAll) continue;
        const RunKey key = way == Way::Alone ? RunKey{0, nullptr, false, 0.0f}
                                             : RunKey{modeOf(entry.kind), entry.arena, entry.isIndexed,
                                                      pass.penWidth >= 0 ? entry.penWidth : 0.0f};
        if (batches.runs.empty() || !(batches.runs.back().key == key))
            batches.runs.push_back(
                {way == Way::Together, key, batches.drawn.size(), 0, batches.words.size(), 0});
        Run& run = batches.runs.back();
        batches.drawn.push_back(index);
        ++run.itemCount;
        if (way == Way::Together)
            run.commandCount += appendCommands(batches.words, entry, static_cast<std::uint32_t>(index));
    }
    for (Run& run : batches.runs)
        if (run.itemCount < static_cast<std::size_t>(std::max(m_leastRun, 0))) run.isTogether = false;
}

void BatchedItem3dDrawer::drawRun(OpenGLFunctions& gl, const RecordPass& pass, const Run& run)
{
    if (pass.context.drawMode == DrawMode::SelectionBufferDraw) giveIndices(gl, pass, run);
    if (pass.penWidth >= 0) uniforms::set(gl, pass.penWidth, run.key.penWidth);

    VertexArrayBinding binding(gl, pass.context.vertexArray);
    run.key.arena->bind(binding);
    m_batches->items.records().bind(gl, pass.hasNormals);
    const auto* commands = reinterpret_cast<const void*>(run.firstWord * sizeof(std::uint32_t));
    const auto count = static_cast<GLsizei>(run.commandCount);
    if (run.key.isIndexed)
        gl.glMultiDrawElementsIndirect(run.key.mode, GL_UNSIGNED_INT, commands, count, 0);
    else
        gl.glMultiDrawArraysIndirect(run.key.mode, commands, count, 0);
    ItemRecords::unbind(gl);
}

// A selection index for each record from the first to the last of the run; those between that the pass does
// not draw report nothing.
void BatchedItem3dDrawer::giveIndices(OpenGLFunctions& gl, const RecordPass& pass, const Run& run)
{
    IItem3dSelectionProvider* provider = providerOf(pass.context);
    if (!provider) {
        uniforms::set(gl, pass.firstRecord, std::numeric_limits<int>::max()); // no record marks anything
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
    uniforms::set(gl, pass.firstRecord, static_cast<int>(*begin));
}
