#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/fetchItem.h>
#include <Viewer3dModule/drawers/OpaquePass.h>
#include <Viewer3dModule/drawers/PointSizePass.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DeferredProgram.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <framework/graphics/InteractiveGraphicsItem.h>

#include <QtCore/QVariant>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <optional>

namespace {

// The convention that a context has when dashes are drawn in it first: it is asked once.
GLint provokingVertex(OpenGLFunctions& gl)
{
    const char* const property = "provoking_vertex";
    QOpenGLContext* context = QOpenGLContext::currentContext();
    const QVariant known = context->property(property);
    if (known.isValid()) return known.toInt();
    GLint convention = GL_LAST_VERTEX_CONVENTION;
    gl.glGetIntegerv(GL_PROVOKING_VERTEX, &convention);
    context->setProperty(property, convention);
    return convention;
}

// Dashes count from the first vertex of each segment, so while a dashing program draws, flat outputs come
// from that vertex. The convention is put back.
class FirstVertexConvention
{
public:
    FirstVertexConvention(OpenGLFunctions* gl, bool wanted)
        : m_gl(wanted ? gl : nullptr)
    {
        if (!m_gl) return;
        m_before = provokingVertex(*m_gl);
        m_gl->glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    }
    ~FirstVertexConvention()
    {
        if (m_gl) m_gl->glProvokingVertex(static_cast<GLenum>(m_before));
    }
    FirstVertexConvention(const FirstVertexConvention&) = delete;
    FirstVertexConvention& operator=(const FirstVertexConvention&) = delete;

private:
    OpenGLFunctions* m_gl;
    GLint m_before = GL_LAST_VERTEX_CONVENTION;
};

constexpr GLenum noFeedback = 0xFFFFFFFFu;

// noFeedback where the bit set does not name exactly one kind.
GLenum feedbackMode(int primitives)
{
    switch (primitives) {
    case PrimitiveBit::Points:
        return GL_POINTS;
    case PrimitiveBit::Lines:
        return GL_LINES;
    case PrimitiveBit::Triangles:
        return GL_TRIANGLES;
    default:
        return noFeedback;
    }
}

// Captures vertices instead of rasterising for as long as it lives.
class FeedbackScope
{
public:
    FeedbackScope(OpenGLFunctions& gl, GLenum mode)
        : m_gl(gl)
    {
        m_gl.glEnable(GL_RASTERIZER_DISCARD);
        if (mode != noFeedback) m_gl.glBeginTransformFeedback(mode);
    }
    // Ended even where nothing began: callers name exactly one kind of primitive, and OpenGL reports those
    // who do not.
    ~FeedbackScope()
    {
        m_gl.glEndTransformFeedback();
        m_gl.glDisable(GL_RASTERIZER_DISCARD);
    }
    FeedbackScope(const FeedbackScope&) = delete;
    FeedbackScope& operator=(const FeedbackScope&) = delete;

private:
    OpenGLFunctions& m_gl;
};

// Items keep what they bind and set for as long as it lives.
class KeepingPass
{
public:
    KeepingPass(ItemPass& pass, const PaintContext& context, bool drawsAsTold)
        : m_pass(pass)
    {
        m_pass.begin(context.drawMode != DrawMode::GeometryCapture, context.offsetsFills && drawsAsTold);
    }
    ~KeepingPass() { m_pass.end(); }
    KeepingPass(const KeepingPass&) = delete;
    KeepingPass& operator=(const KeepingPass&) = delete;

private:
    ItemPass& m_pass;
};

// What is highlighted has the settings' colour, of whatever alpha.
bool hasAllFragments(const Drawable3dItem& item)
{
    return (item.isSolid() || item.drawsOpaque()) && !item.isHighlighted();
}

double highlightAlpha()
{
    const View3dSettings* settings = View3dSettings::getInstance();
    return settings ? settings->getSelectedColor().alphaF() : 1.0;
}

struct Looks
{
    ProgramColors colors = ProgramColors::All; ///< those that the program has to show
    bool areOpaque = false;                    ///< asked where none of these has an alpha of 0
};

// Those of what might be drawn; most registries end this with their first item.
Looks looksOf(const std::vector<Drawable3dItem*>& items)
{
    bool isAnyDrawn = false;
    bool areAllVisible = highlightAlpha() > 0.0;
    bool areItemColors = true;
    bool areOpaque = highlightAlpha() >= 1.0;
    for (const Drawable3dItem* item : items) {
        if (!item->isVisible()) continue;
        if (!item->isUntextured()) return {};
        isAnyDrawn = true;
        areAllVisible = areAllVisible && (item->isSolid() || item->drawsOpaque());
        areItemColors = areItemColors && item->showsItemColors();
        areOpaque = areOpaque && item->isOpaque();
    }
    if (!isAnyDrawn) return {};
    if (!areAllVisible) return {areItemColors ? ProgramColors::OfItems : ProgramColors::All, false};
    return {areItemColors ? ProgramColors::VisibleItems : ProgramColors::VisibleVertices, areOpaque};
}

// One small item, and the many others would not pay for what it takes. Who is highlighted, or not lit, the
// program does not ask.
bool areLargeSurfaces(const std::vector<Drawable3dItem*>& items)
{
    bool isAnyDrawn = false;
    for (const Drawable3dItem* item : items) {
        if (!item->isVisible()) continue;
        if (!item->isLargeSurface() || item->isHighlighted()) return false;
        isAnyDrawn = true;
    }
    return isAnyDrawn;
}

bool areUnlit(const std::vector<Drawable3dItem*>& items)
{
    bool isAnyDrawn = false;
    for (const Drawable3dItem* item : items) {
        if (!item->isVisible()) continue;
        if (!item->isUnlit()) return false;
        isAnyDrawn = true;
    }
    return isAnyDrawn;
}

// Items lie anywhere in memory: one that is drawn soon is asked for while others are drawn.
constexpr std::size_t itemsAhead = 4;

// The pass goes on in the caller's context, which building makes way for the scene's.
QOpenGLShaderProgram* createGeometryProgram(Scene3d& scene)
{
    const CurrentContextGuard callers;
    return scene.createProgram({QStringLiteral("shader:Viewer3dModule/dummy.vertex.glsl")}, {},
                               {"gl_Position"});
}

} // namespace

SequentialItem3dDrawer::SequentialItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* defaultProgram)
    : Item3dDrawer(scene)
    , m_defaultProgram(defaultProgram)
{
    setOwnsItemUniforms(true); // but for items that draw otherwise
}

SequentialItem3dDrawer::~SequentialItem3dDrawer() = default;

QOpenGLShaderProgram* SequentialItem3dDrawer::getDefaultProgram() const
{
    if (DeferredProgram::isWaiting(m_defaultProgram)) {
        const CurrentContextGuard callers;
        if (scene()) scene()->makeCurrent();
        DeferredProgram::build(m_defaultProgram);
    }
    return m_defaultProgram;
}

std::unique_ptr<Item3dDrawer> SequentialItem3dDrawer::clone() const
{
    return std::make_unique<SequentialItem3dDrawer>(scene(), m_defaultProgram);
}

void SequentialItem3dDrawer::draw(const PaintContext& context, Filter filter)
{
    if (getItems().empty()) return;
    if (!findSides(context)) {
        drawAll(context, filter);
        return;
    }
    // What lies inside as a whole is drawn as if there were no fence, what lies outside not at all.
    const auto lying = [&](FenceSide side) {
        return [this, side, &filter](Drawable3dItem* item) {
            return sideOf(*item) == side && (!filter || filter(item));
        };
    };
    setInsideFence(true);
    if (hasItems(FenceSide::Inside)) drawAll(context, lying(FenceSide::Inside));
    setInsideFence(false);
    if (hasItems(FenceSide::Across)) drawAll(context, lying(FenceSide::Across));
}

// While the user is at work on the fence, what lies outside is shown as well.
bool SequentialItem3dDrawer::findSides(const PaintContext& context)
{
    if (context.drawMode == DrawMode::GeometryCapture || !isFenced()) return false;
    Fence3dItem* fence = scene()->getFence();
    if (fence->isInteractionMode()) return false;
    const std::optional<FenceSides> sides = fence->getSides(scene()->sceneToModelTransform());
    m_sides.clear();
    for (const Drawable3dItem* item : getItems()) {
        const InteractiveGraphicsItem* hostItem = sides && item->isVisible() ? item->hostItem() : nullptr;
        m_sides.push_back(hostItem ? sides->sideOf(hostItem->sceneBoundingBox()) : FenceSide::Across);
    }
    return true;
}

FenceSide SequentialItem3dDrawer::sideOf(const Drawable3dItem& item) const
{
    return m_sides[static_cast<std::size_t>(indexOf(item))];
}

bool SequentialItem3dDrawer::hasItems(FenceSide side) const
{
    return std::find(m_sides.begin(), m_sides.end(), side) != m_sides.end();
}

void SequentialItem3dDrawer::drawAll(const PaintContext& context, const Filter& filter)
{
    QOpenGLShaderProgram* simpler = depthProgram(context);
    if (!simpler) {
        drawItems(context, filter);
        return;
    }
    PaintContext solids = context;
    solids.program = simpler;
    drawItems(solids,
              [&](Drawable3dItem* item) { return hasAllFragments(*item) && (!filter || filter(item)); });
    drawItems(context,
              [&](Drawable3dItem* item) { return !hasAllFragments(*item) && (!filter || filter(item)); });
}

QOpenGLShaderProgram* SequentialItem3dDrawer::depthProgram(const PaintContext& context) const
{
    const bool isPossible =
        context.depthOnly && context.drawMode == DrawMode::OrdinalDraw && !context.program && scene();
    // What a fence leaves out is told in the fragment stage.
    if (!isPossible || isFenced()) return nullptr;
    return scene()->getDepthProgram(m_defaultProgram);
}

void SequentialItem3dDrawer::drawItems(const PaintContext& context, const Filter& filter)
{
    PaintContext pass = context;
    Looks looks;
    bool areLarge = false;
    if (context.drawMode == DrawMode::OrdinalDraw) { // others are not worth a look at all items
        looks = looksOf(getItems());
        setProgramColors(looks.colors);
        setUnlit(areUnlit(getItems()));
        areLarge = isLit(context) && areLargeSurfaces(getItems());
        setLargeSurfaces(areLarge);
    }
    const bool canDraw = beginPass(pass);
    setProgramColors(ProgramColors::All);
    setUnlit(false);
    setLargeSurfaces(false);
    if (!canDraw) return;
    const PointSizePass pointSize(currentGLFunctions(), areLarge && isForLargeSurfaces(*pass.program));
    const OpaquePass opaque(currentGLFunctions(),
                            context.blends && looks.areOpaque && passUniforms().showsOwnAlphas);
    drawEach(getItems(), pass, filter);
}

void SequentialItem3dDrawer::drawEach(const std::vector<Drawable3dItem*>& items, const PaintContext& pass,
                                      const Filter& filter)
{
    const FirstVertexConvention convention(currentGLFunctions(), itemUniforms().dashSize >= 0);
    const KeepingPass keeping(itemPass(), pass, passUniforms().drawsAsTold);
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i + itemsAhead < items.size()) fetchItem(items[i + itemsAhead]);
        if (items[i]->isVisible() && (!filter || filter(items[i]))) drawWithUniforms(items[i], pass);
    }
}

void SequentialItem3dDrawer::drawOnly(Drawable3dItem* item, const PaintContext& context)
{
    if (!item->isVisible()) return;
    PaintContext pass = context;
    if (!beginPass(pass)) return;
    const FirstVertexConvention convention(currentGLFunctions(), itemUniforms().dashSize >= 0);
    drawWithUniforms(item, pass);
}

void SequentialItem3dDrawer::drawOnly(const std::vector<Drawable3dItem*>& items, const PaintContext& context)
{
    PaintContext pass = context;
    if (beginPass(pass)) drawEach(items, pass, {});
}

bool SequentialItem3dDrawer::beginPass(PaintContext& context)
{
    if (!context.program) context.program = m_defaultProgram;
    context.drawer = this;
    if (context.drawMode == DrawMode::GeometryCapture) {
        if (!m_geometryProgram && scene()) m_geometryProgram = createGeometryProgram(*scene());
        context.program = m_geometryProgram;
    }
    if (!prepareProgram(context)) return false;
    const QVariant primitives = context.program->property("primitives");
    if (primitives.isValid()) context.primitives = primitives.toInt();
    return true;
}

void SequentialItem3dDrawer::drawWithUniforms(Drawable3dItem* item, const PaintContext& context)
{
    const bool drawsByPrimitives = item->drawsByPrimitives();
    itemPass().beginItem(drawsByPrimitives);
    if (!drawsByPrimitives) takeItemUniforms(context);
    setItemParameters(item, context);
    const std::size_t depth = beginTransform();
    setTransform(context, item->getTransform(), true);
    drawItem(item, context);
    endTransform(depth);
}

void SequentialItem3dDrawer::drawItem(Drawable3dItem* item, const PaintContext& context)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    std::optional<FeedbackScope> feedback;
    if (context.drawMode == DrawMode::GeometryCapture)
        feedback.emplace(*gl, feedbackMode(context.primitives));
    item->drawElement(context);
}
