#include <Viewer3dModule/drawables/Node3dItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

const QColor defaultNodeColor = Qt::magenta; // the settings' own, for a host that registers none
constexpr double nodeAlpha = 0.5;

QColor nodeColor()
{
    const View3dSettings* settings = View3dSettings::getInstance();
    QColor color = settings ? settings->getNodeColor() : defaultNodeColor;
    color.setAlphaF(nodeAlpha);
    return color;
}

/// Pixels on the screen of one scene unit at the place, across the view; 0 where the place is behind a
/// central camera.
double pixelsPerUnit(const PaintContext& context, const glm::dvec3& place)
{
    const glm::dmat4 view(context.view);
    const glm::dmat4 toClip = glm::dmat4(context.projection) * view;
    const glm::dvec3 across = glm::normalize(glm::dvec3(view[0][0], view[1][0], view[2][0]));
    const glm::dvec4 at = toClip * glm::dvec4(place, 1.0);
    const glm::dvec4 beside = toClip * glm::dvec4(place + across, 1.0);
    if (at.w <= 0.0 || beside.w <= 0.0) return 0.0;
    const glm::dvec2 step = glm::dvec2(beside) / beside.w - glm::dvec2(at) / at.w;
    return std::abs(step.x) * context.viewportRect.width() * 0.5;
}

float tessLevel(double pixelRadius)
{
    float level = 32.0f;
    if (pixelRadius < 32.0) level = 8.0f;
    if (pixelRadius < 64.0) level = 16.0f; // also for the smallest: what is coarser shows corners
    return level;
}

} // namespace

Node3dItem::Node3dItem(Scene3d* scene, int sphereType)
    : m_sphere(std::make_unique<DrawableShaderSphere>(sphereType))
    , m_color(nodeColor())
{
    if (scene) setDrawer(m_sphere->getDrawer(scene));
}

Node3dItem::~Node3dItem() = default;

int Node3dItem::getDefaultDrawerType() const
{
    return DrawerType::ShaderSphere;
}

bool Node3dItem::hasTransparency() const
{
    return m_color.alpha() < 255;
}

void Node3dItem::setModelPos(const glm::dvec3& position)
{
    m_modelPos = position;
    m_hasPosition = true;
}

void Node3dItem::draw(const PaintContext& context)
{
    const Scene3d* owner = scene();
    OpenGLFunctions* gl = getGLFunctions();
    if (context.drawMode != DrawMode::OrdinalDraw || !m_hasPosition || !owner || !gl || !context.drawer)
        return;
    const glm::dvec3 place = owner->mapFromModel(m_modelPos);
    const glm::dmat4 toScene = owner->modelToSceneTransform();
    const double scale = std::hypot(toScene[0][0], toScene[0][1]);
    const double pixels = pixelsPerUnit(context, place);
    const bool isInPixels = m_pixelRadius > 0.0;
    if (isInPixels && pixels <= 0.0) return;
    const double radius = isInPixels ? m_pixelRadius / pixels : m_modelRadius * scale;
    const glm::dmat4 model = glm::scale(glm::translate(glm::dmat4(1.0), place), glm::dvec3(radius));
    context.drawer->setTransform(context, glm::mat4(model), false);
    const ItemUniforms uniformsOfItem = Item3dDrawer::itemUniforms(context);
    uniforms::set(*gl, uniformsOfItem.colorMode, ColorMode::Item);
    uniforms::set(*gl, uniformsOfItem.itemColor, m_color);
    const float level = tessLevel(isInPixels ? m_pixelRadius : radius * pixels);
    m_sphere->setTessLevel(level, level);
    if (m_pixelRadius == 0.0) m_sphere->setWireMode(true);
    m_sphere->draw(context, 1);
}
