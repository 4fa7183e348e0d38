#include <Viewer3dModule/scene/Scene3d.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/Item3dSelectionProvider.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/ItemIndex.h>
#include <Viewer3dModule/scene/Scene3dFenceObserver.h>
#include <Viewer3dModule/scene/SelectionStore.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>
#include <framework/ksp/Log.h>

#include <QtGui/QOpenGLShaderProgram>

#include <cmath>
#include <optional>

Scene3d::Scene3d(CProjectModel* model, QObject* parent)
    : QObject(parent)
    , m_model(model)
    , m_itemIndex(std::make_unique<ItemIndex>())
    , m_surface(std::make_unique<QOffscreenSurface>())
    , m_fenceObserver(std::make_unique<FenceObserver>(*this))
{
    // For queued connections to the signals.
    qRegisterMetaType<LONGID>("LONGID");
    qRegisterMetaType<glm::dmat4>("glm::dmat4");
    QOpenGLContext* share = QOpenGLContext::globalShareContext();
    if (share) {
        m_surface->setFormat(share->format());
        m_context.setFormat(share->format());
        m_context.setShareContext(share);
    }
    m_surface->create();
    m_context.create();
    if (!makeCurrent()) {
        ksp::Log::error(QStringLiteral("The scene has no OpenGL context and draws nothing"));
    } else if (OpenGLFunctions* gl = getGLFunctions()) {
        initializeGLCommon(gl);
        gl->glGenVertexArrays(1, &m_defaultVao);
    }
    addDefaultDrawers();
}

// Everything that holds OpenGL objects goes while the context can still be made current.
Scene3d::~Scene3d()
{
    const CurrentContextGuard callers;
    OpenGLFunctions* gl = makeCurrent() ? getGLFunctions() : nullptr;
    if (gl) gl->glDeleteVertexArrays(1, &m_defaultVao);
    clear();
    m_drawers.clear();
    m_localItems.clear();
    m_localDrawers.clear();
    m_localForegroundDrawers.clear();
    m_selectionProvider.reset();
    m_selectionStore.reset();
    qDeleteAll(findChildren<QOpenGLShaderProgram*>(QString(), Qt::FindDirectChildrenOnly));
    doneCurrent();
}

bool Scene3d::makeCurrent()
{
    return m_context.makeCurrent(m_surface.get());
}

// What is called for one item after another does not ask the driver for what is so already.
void Scene3d::stayCurrent()
{
    const bool isCurrent =
        QOpenGLContext::currentContext() == &m_context && m_context.surface() == m_surface.get();
    if (!isCurrent) makeCurrent();
}

void Scene3d::doneCurrent()
{
    m_context.doneCurrent();
}

QSurface* Scene3d::getSurface() const
{
    return m_surface.get();
}

void Scene3d::initializeGLCommon(OpenGLFunctions* functions)
{
    if (!functions) return;
    functions->glEnable(GL_DEPTH_TEST);
    functions->glEnable(GL_PROGRAM_POINT_SIZE);
    functions->glEnable(GL_BLEND);
    functions->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    functions->glDepthFunc(GL_LEQUAL);
    // [0, 0.001) is left to foreground items.
    functions->glDepthRange(getForegroundItemsZRange(), 1.0);
    functions->glEnable(GL_POLYGON_OFFSET_FILL);
    functions->glPolygonOffset(1.0f, 1.0f);
}

// Passes that draw masks, or mark items in the selection buffer, have variants that do.
std::vector<std::string> Scene3d::withColorsOnly(std::vector<std::string> defines)
{
    defines.emplace_back("RX_COLORS_ONLY");
    defines.emplace_back("RX_NO_SELECTION_BUFFER");
    return defines;
}

QOpenGLShaderProgram* Scene3d::createProgram(const QStringList& files,
                                             const std::vector<std::string>& defines,
                                             const std::vector<std::string>& varyings)
{
    // Without a context there is nothing to compile with; the constructor has said so.
    if (!makeCurrent()) return new QOpenGLShaderProgram(this);
    return buildShaderProgram(this, files, withColorsOnly(defines), varyings);
}

// --- elements
// ---------------------------------------------------------------------------------------------------------

void Scene3d::addElement(Graphics3dItem* item)
{
    if (!item) return;
    stayCurrent();
    if (m_items.empty()) m_bounds.reset();
    const auto [entry, added] = m_items.emplace(item->getId(), item);
    if (!added) {
        if (entry->second != item) delete item;
        return;
    }
    m_itemIndex->add(*item);
    if (!item->getDrawer()) {
        const int visibilityType = item->getVisibilityType();
        const int drawerType = item->getDefaultDrawerType();
        addDrawer(visibilityType, drawerType);
        item->setDrawer(getDrawer(visibilityType, drawerType));
    }
    if (isInGroupOperation()) {
        addPending(item);
        m_boundsDirty = true;
        return;
    }
    item->updateVisibility();
    item->updateDataImpl();
    item->updateData(nullptr);
    item->boundsChanged();
    if (item->isVisible()) setBounds(item->sceneBoundingBox());
}

void Scene3d::removeElement(LONGID id)
{
    stayCurrent();
    const auto entry = m_items.find(id);
    if (entry == m_items.end()) {
        setBoundsDirty();
        return;
    }
    m_boundsDirty = true;
    Graphics3dItem* item = entry->second;
    forgetUpdate(item);
    m_items.erase(entry);
    m_itemIndex->remove(*item);
    delete item;
    Q_EMIT elementRemoved(id);
}

InteractiveGraphicsItem* Scene3d::findGraphicsItem(LONGID id) const
{
    const auto entry = m_items.find(id);
    return entry == m_items.end() ? nullptr : entry->second;
}

void Scene3d::clear()
{
    makeCurrent();
    std::unordered_map<LONGID, Graphics3dItem*> items;
    items.swap(m_items);
    m_pending.clear();
    m_pendingGone.clear();
    for (const auto& entry : items) {
        entry.second->m_isPending = false;
        if (m_updateRun) forgetUpdate(entry.second);
        m_itemIndex->remove(*entry.second);
        delete entry.second;
    }
    m_boundsDirty = true;
}

// --- local items
// ------------------------------------------------------------------------------------------------------

void Scene3d::addLocalItem(std::unique_ptr<Drawable3dItem> item)
{
    if (!item) return;
    makeCurrent();
    if (!item->getDrawer()) item->setDrawer(getLocalDrawer(item->getDefaultDrawerType()));
    m_localItems.insert(std::move(item));
    Q_EMIT updateView();
}

void Scene3d::deleteLocalItem(const Drawable3dItem* item)
{
    const auto entry = m_localItems.find(item);
    if (entry == m_localItems.end()) return;
    makeCurrent();
    m_localItems.erase(entry);
    Q_EMIT updateView();
}

// --- drawing
// ----------------------------------------------------------------------------------------------------------

namespace {

Scene3d::ItemFilter orVisibleItems(Scene3d::ItemFilter filter)
{
    if (filter) return filter;
    return [](Drawable3dItem* item) { return item && item->isVisible(); };
}

/// Has depths written to the foreground's range for as long as it lives.
class ForegroundRange
{
public:
    explicit ForegroundRange(OpenGLFunctions& gl)
        : m_gl(gl)
    {
        m_gl.glGetDoublev(GL_DEPTH_RANGE, m_before);
        // The end belongs to the range beyond already.
        const auto end = static_cast<float>(Scene3d::getForegroundItemsZRange());
        m_gl.glDepthRange(0.0, static_cast<double>(std::nextafter(end, 0.0f)));
    }
    ~ForegroundRange() { m_gl.glDepthRange(m_before[0], m_before[1]); }
    ForegroundRange(const ForegroundRange&) = delete;
    ForegroundRange& operator=(const ForegroundRange&) = delete;

private:
    OpenGLFunctions& m_gl;
    GLdouble m_before[2] = {0.0, 1.0};
};

} // namespace

void Scene3d::drawElements(const PaintContext& context, const CFilterElement* filter, ItemFilter itemFilter)
{
    flushBounds();
    itemFilter = orVisibleItems(std::move(itemFilter));
    for (const auto& [key, drawer] : m_drawers)
        if (isTypeDrawn(key.first, filter)) drawWith(*drawer, context, itemFilter);
}

bool Scene3d::isTypeDrawn(int visibilityType, const CFilterElement* filter) const
{
    return !filter || filter->isTypeAccepted(visibilityType) || m_alwaysVisible.count(visibilityType) != 0;
}

void Scene3d::drawLocalItems(const PaintContext& context, ItemFilter itemFilter)
{
    itemFilter = orVisibleItems(std::move(itemFilter));
    for (const auto* drawers : {&m_localDrawers, &m_localForegroundDrawers})
        for (const auto& entry : *drawers)
            drawWith(*entry.second, context, itemFilter);
}

void Scene3d::drawWith(Item3dDrawer& drawer, const PaintContext& context, const ItemFilter& itemFilter)
{
    if (drawer.isForeground() && context.depthOnly) return; // depth maps are of what stands in the scene
    std::optional<ForegroundRange> range;
    OpenGLFunctions* gl = getGLFunctions();
    if (gl && drawer.isForeground() && !drawer.getItems().empty()) range.emplace(*gl);
    // A copy of the filter would allocate.
    drawer.draw(context, [&itemFilter](Drawable3dItem* item) { return itemFilter(item); });
}

void Scene3d::drawFrame(const PaintContext& context, const CFilterElement* filter, ItemFilter itemFilter)
{
    drawElements(context, filter, itemFilter);
    drawLocalItems(context, std::move(itemFilter));
}

// --- geometry capture
// -------------------------------------------------------------------------------------------------

std::tuple<unsigned, unsigned, unsigned> Scene3d::generateItemGeometry(Drawable3dItem* item)
{
    if (!item) return {0u, 0u, 0u};
    makeCurrent();
    const Drawable3dPrimitive::GeometryInfo info = item->getGeometryInfo();
    const Drawable3dPrimitive::Geometry made = item->generateGeometry();
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return made;
    if (made != Drawable3dPrimitive::Geometry(0u, 0u, 0u)) return inFence(*item, made);

    PaintContext context;
    context.scene = this;
    context.vertexArray = m_defaultVao;
    context.drawMode = DrawMode::GeometryCapture;
    const unsigned points = captureGeometry(item, context, PrimitiveBit::Points, info.pointCount);
    const unsigned lines =
        captureGeometry(item, context, PrimitiveBit::Lines, std::size_t(info.lineCount) * 2);
    const unsigned triangles =
        captureGeometry(item, context, PrimitiveBit::Triangles, std::size_t(info.triangleCount) * 3);
    gl->glFinish();
    return inFence(*item, {points, lines, triangles});
}

unsigned Scene3d::captureGeometry(Drawable3dItem* item, PaintContext& context, int primitive,
                                  std::size_t vertexCount)
{
    if (vertexCount == 0) return 0;
    OpenGLFunctions* gl = getGLFunctions();
    unsigned buffer = 0;
    gl->glGenBuffers(1, &buffer);
    gl->glBindBuffer(GL_TRANSFORM_FEEDBACK_BUFFER, buffer);
    gl->glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, static_cast<GLsizeiptr>(vertexCount * sizeof(glm::vec4)),
                     nullptr, GL_DYNAMIC_DRAW);
    // What the item does not fill reads as zeros.
    gl->glClearBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, GL_R32F, GL_RED, GL_FLOAT, nullptr);
    gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    context.primitives = primitive;
    Item3dDrawer* drawer = item->getDrawer();
    if (auto* sequential = dynamic_cast<SequentialItem3dDrawer*>(drawer))
        sequential->drawOnly(item, context);
    else if (drawer)
        drawer->draw(context, [item](Drawable3dItem* other) { return other == item; });
    gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, 0);
    return buffer;
}
