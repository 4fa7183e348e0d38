#include <Viewer3dModule/drawers/Item3dDrawer.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/ContextualItem3dDrawer.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DeferredProgram.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <framework/graphics/InteractiveGraphicsItem.h>
#include <framework/model/CProjectModel.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <atomic>
#include <utility>

namespace {

// The settings' constructor values, for a host that registers no settings.
const QColor defaultSelectedColor = Qt::yellow;
const QColor defaultInteractionColor = Qt::magenta;

} // namespace

Item3dDrawer::Item3dDrawer(Scene3d* scene)
    : m_scene(scene)
{
}

Item3dDrawer::~Item3dDrawer()
{
    for (Drawable3dItem* item : m_items)
        item->m_drawerIndex = -1;
}

void Item3dDrawer::updateItem(int) {}

const Item3dDrawer* Item3dDrawer::root() const
{
    const Item3dDrawer* drawer = this;
    while (drawer->m_parent)
        drawer = drawer->m_parent;
    return drawer;
}

const std::vector<Drawable3dItem*>& Item3dDrawer::getItems() const
{
    return root()->m_items;
}

void Item3dDrawer::updateItem(Drawable3dItem* item)
{
    updateItem(item->m_drawerIndex);
}

ContextualItem3dDrawer Item3dDrawer::asContextual(const PaintContext& context)
{
    return ContextualItem3dDrawer(this, context);
}

int Item3dDrawer::addItem(Drawable3dItem* item)
{
    if (item->m_drawerIndex < 0) {
        if (m_parent) {
            m_parent->addItem(item);
        } else {
            item->m_drawerIndex = static_cast<int>(m_items.size());
            m_items.push_back(item);
            registryChanged();
        }
    }
    updateItem(item->m_drawerIndex);
    return item->m_drawerIndex;
}

void Item3dDrawer::removeItem(int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= getItems().size()) return;
    if (m_parent) {
        m_parent->removeItem(index);
    } else {
        const auto slot = static_cast<std::size_t>(index);
        if (slot + 1 != m_items.size()) {
            m_items[slot] = m_items.back();
            m_items[slot]->m_drawerIndex = index;
        }
        m_items.pop_back();
        registryChanged();
    }
    updateItem(index);
}

void Item3dDrawer::removeItem(Drawable3dItem* item)
{
    removeItem(item->m_drawerIndex);
    item->m_drawerIndex = -1;
}

void Item3dDrawer::replaceItem(int index, Drawable3dItem* item)
{
    if (m_parent) {
        m_parent->replaceItem(index, item);
    } else if (index >= 0 && static_cast<std::size_t>(index) < m_items.size()) {
        m_items[static_cast<std::size_t>(index)] = item;
        registryChanged();
    }
}

void Item3dDrawer::registryChanged()
{
    static std::atomic<std::uint64_t> last{0};
    m_registryRevision = ++last;
}

void Item3dDrawer::addChildDrawer(Item3dDrawer* child)
{
    child->setParentDrawer(this);
}

void Item3dDrawer::setParentDrawer(Item3dDrawer* parent)
{
    m_parent = parent;
}

int Item3dDrawer::indexOf(const Drawable3dItem& item)
{
    return item.m_drawerIndex;
}

glm::uvec2 Item3dDrawer::itemId(const Drawable3dItem& item)
{
    const std::uint64_t id = item.drawId();
    return {static_cast<std::uint32_t>(id), static_cast<std::uint32_t>(id >> 32)};
}

glm::mat3 Item3dDrawer::normalMatrix(const glm::mat4& modelView)
{
    return glm::inverseTranspose(glm::mat3(modelView));
}

bool Item3dDrawer::isFenced() const
{
    return m_scene && !m_insideFence && obeysFence() && m_scene->isFenced();
}

bool Item3dDrawer::prepareProgram(PaintContext& context)
{
    const bool isUsable =
        context.program && (context.program->isLinked() || DeferredProgram::isWaiting(context.program));
    const bool isVaried = isUsable && currentGLFunctions() && context.drawMode != DrawMode::GeometryCapture;
    if (isVaried) {
        ProgramVariant variant;
        variant.drawsMasks = context.drawMode != DrawMode::OrdinalDraw;
        variant.marksItems = context.drawMode == DrawMode::SelectionBufferDraw;
        variant.readsRecords = m_readsRecords;
        variant.colors = m_programColors;
        variant.isUnlit = m_isUnlit;
        variant.drawsLargeSurfaces = m_areLargeSurfaces;
        if (isFenced())
            variant.fence = m_scene->getFence()->getFenceType() == Fence3DObject::SphereFence
                                ? ProgramFence::Sphere
                                : ProgramFence::Swept;
        OwnUniforms own;
        own.pass = true;
        own.light = lightSettings() != nullptr;
        own.items = m_ownsItemUniforms;
        context.program = &beginProgramVariant(*context.program, variant, own);
    }
    m_lacksItemUniforms = isVaried && m_ownsItemUniforms;
    return prepareProgram(std::as_const(context));
}

void Item3dDrawer::takeItemUniforms(const PaintContext& context)
{
    if (!m_lacksItemUniforms) return;
    m_lacksItemUniforms = false;
    ::takeItemUniforms(*context.program);
}

bool Item3dDrawer::prepareProgram(const PaintContext& context)
{
    m_preparedProgram = nullptr;
    QOpenGLShaderProgram* program = context.program;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !program) return false;
    DeferredProgram::build(program);
    // bind() would try to link a program that failed to link again, every frame.
    if (!program->isLinked()) return false;
    if (!program->bind()) return false;

    m_uniforms = PassUniforms::of(*program);
    uniforms::set(*gl, m_uniforms.drawMode, context.drawMode);
    uniforms::set(*gl, m_uniforms.projection, context.projection);
    uniforms::set(*gl, m_uniforms.view, context.view);
    uniforms::set(*gl, m_uniforms.viewport, context.viewport);
    if (m_uniforms.viewportInverted >= 0)
        uniforms::set(*gl, m_uniforms.viewportInverted, glm::inverse(context.viewport));

    m_preparedProgram = program;
    setTransform(context, m_transform, false);
    findLight(context);

    const View3dSettings* settings = View3dSettings::getInstance();
    uniforms::set(*gl, m_uniforms.selectionColor,
                  settings ? settings->getSelectedColor() : defaultSelectedColor);
    uniforms::set(*gl, m_uniforms.interactionColor,
                  settings ? settings->getInteractionColor() : defaultInteractionColor);

    joinSelection(context);
    bindFence(*gl, context);
    return true;
}

// A program that is not to be limited, or cannot be told by what, is told so: it may have been limited in its
// last pass.
void Item3dDrawer::bindFence(OpenGLFunctions& gl, const PaintContext& context)
{
    Fence3dItem* fence = isFenced() ? m_scene->getFence() : nullptr;
    if (!fence || !fence->bind(context, m_uniforms)) uniforms::set(gl, m_uniforms.fenceToUse, 0);
}

void Item3dDrawer::joinSelection(const PaintContext& context)
{
    m_selection = nullptr;
    m_itemIndexLocation = -1;
    if (context.drawMode != DrawMode::SelectionBufferDraw) return;
    m_itemIndexLocation = m_uniforms.itemIndex;
    if (!m_scene || !m_scene->isHasItemSelectionProvider()) return;
    IItem3dSelectionProvider* provider = m_scene->getItemSelectionProvider();
    if (provider->bindProgram(context)) m_selection = provider;
}

void Item3dDrawer::setTransform(const PaintContext& context, const glm::mat4& matrix, bool multiply)
{
    m_transform = multiply ? m_transform * matrix : matrix;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!context.program || !gl) return;
    uniforms::set(*gl, m_uniforms.model, m_transform);
    if (m_uniforms.normalMatrix >= 0)
        uniforms::set(*gl, m_uniforms.normalMatrix, normalMatrix(context.view * m_transform));
    if (m_lightModeChanged) setShaderLightMode(m_lightMode);
}

glm::mat4 Item3dDrawer::getTransform()
{
    return m_transform;
}

const Scene3dViewLightingSettings* Item3dDrawer::lightSettings() const
{
    return m_scene ? Scene3dViewLightingSettings::find(m_scene->getModel()) : nullptr;
}

bool Item3dDrawer::isLit(const PaintContext& context) const
{
    const Scene3dViewLightingSettings* settings = lightSettings();
    return settings && settings->getView(context.viewName).flag;
}

// The light depends on the view only, so it is found once a pass and not with every model matrix.
void Item3dDrawer::findLight(const PaintContext& context)
{
    m_lightModeChanged = false;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || m_uniforms.lightDirection < 0) return;
    const Scene3dViewLightingSettings* settings = lightSettings();
    if (!settings) return;
    const Scene3dViewLightingSettings::ViewData& light = settings->getView(context.viewName);
    m_lightMode = light.flag;
    setShaderLightMode(m_lightMode);
    const glm::mat4 modelView = context.view * glm::mat4(m_scene->modelToSceneTransform());
    uniforms::set(*gl, m_uniforms.lightDirection,
                  glm::normalize(normalMatrix(modelView) * light.getLightDirection()));
}

void Item3dDrawer::setItemParameters(const Drawable3dItem* item, const PaintContext& context)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    if (m_uniforms.itemFlags >= 0) {
        const std::int32_t flags = item->isHighlighted() ? ItemFlag::Highlighted : ItemFlag::Normal;
        if (!m_itemPass.isActive() || m_itemPass.uniforms().itemFlags.change(flags))
            uniforms::set(*gl, m_uniforms.itemFlags, flags);
    }
    if (m_itemIndexLocation >= 0) setSelectionIndex(*gl, *item);
    if (m_uniforms.itemId >= 0) uniforms::set(*gl, m_uniforms.itemId, itemId(*item));
    if (context.drawMode == DrawMode::GlueMaskDraw && m_uniforms.glueMask >= 0)
        uniforms::set(*gl, m_uniforms.glueMask, item->getGlueMask());
}

// An item that gets no index of its own must not go on with that of the item before it: it gets the index 0,
// which nobody reads.
void Item3dDrawer::setSelectionIndex(OpenGLFunctions& gl, const Drawable3dItem& item)
{
    const InteractiveGraphicsItem* hostItem = item.hostItem();
    if (hostItem && m_selection)
        m_selection->addItemId(hostItem->getId());
    else
        uniforms::set(gl, m_itemIndexLocation, 0);
}

void Item3dDrawer::setPenWidth(float width)
{
    if (OpenGLFunctions* gl = currentGLFunctions()) uniforms::set(*gl, m_uniforms.items.penWidth, width);
}

void Item3dDrawer::setShaderLightMode(bool on)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || m_uniforms.lightMode < 0) return;
    const bool isLit = m_lightMode && on;
    if (!m_itemPass.isActive() || m_itemPass.uniforms().lightMode.change(isLit))
        uniforms::set(*gl, m_uniforms.lightMode, isLit);
    m_lightModeChanged = isLit != m_lightMode;
}

void Item3dDrawer::saveTransformState()
{
    m_transformStack.push_back(m_transform);
}

void Item3dDrawer::restoreTransformState(const PaintContext& context)
{
    if (m_transformStack.empty()) return;
    const glm::mat4 saved = m_transformStack.back();
    setTransform(context, saved, false);
    m_transformStack.pop_back();
}

std::size_t Item3dDrawer::beginTransform()
{
    saveTransformState();
    return m_transformStack.size() - 1;
}

void Item3dDrawer::endTransform(std::size_t depth)
{
    if (depth >= m_transformStack.size()) return;
    m_transform = m_transformStack[depth];
    m_transformStack.resize(depth);
    if (m_lightModeChanged) setShaderLightMode(m_lightMode);
}

void Item3dDrawer::translate(const PaintContext& context, const glm::vec3& offset)
{
    setTransform(context, glm::translate(glm::mat4(1.0f), offset), true);
}

void Item3dDrawer::scale(const PaintContext& context, const glm::vec3& factors)
{
    setTransform(context, glm::scale(glm::mat4(1.0f), factors), true);
}

void Item3dDrawer::rotate(const PaintContext& context, float angle, const glm::vec3& axis)
{
    setTransform(context, glm::rotate(glm::mat4(1.0f), angle, axis), true);
}

bool Item3dDrawer::numbersVertices(const PaintContext& context)
{
    const Item3dDrawer* drawer = context.drawer;
    return !drawer || drawer->m_preparedProgram != context.program ||
           drawer->m_uniforms.items.numbersVertices;
}

ItemPass* Item3dDrawer::activePass(const PaintContext& context)
{
    return m_itemPass.isActive() && m_preparedProgram == context.program ? &m_itemPass : nullptr;
}

ItemUniforms Item3dDrawer::itemUniforms(const PaintContext& context)
{
    if (!context.program) return {};
    if (context.drawer && context.drawer->m_preparedProgram == context.program)
        return context.drawer->m_uniforms.items;
    return ItemUniforms::of(*context.program);
}
