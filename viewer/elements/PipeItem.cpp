#include <viewer/elements/PipeItem.h>

#include <viewer/elements/LinePaths.h>

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

/// Maps the cylinder of radius 1 from z = -1 to z = 1 to the one between the points.
glm::dmat4 cylinderBetween(const glm::dvec3& from, const glm::dvec3& to, double radius)
{
    const glm::dvec3 half = (to - from) / 2.0;
    const glm::dvec3 along = glm::normalize(half);
    const glm::dvec3 other = std::abs(along.z) < 0.9 ? glm::dvec3(0, 0, 1) : glm::dvec3(1, 0, 0);
    const glm::dvec3 across = glm::normalize(glm::cross(other, along));
    return {glm::dvec4(radius * across, 0.0), glm::dvec4(radius * glm::cross(along, across), 0.0),
            glm::dvec4(half, 0.0), glm::dvec4((from + to) / 2.0, 1.0)};
}

} // namespace

PipeItem::PipeItem(FeatureElement* element, std::optional<float> pointSize)
    : FeatureItem(element, pointSize)
{
}

PipeItem::~PipeItem() = default;

double PipeItem::radiusOf(const FeatureElement& element)
{
    constexpr double largest = 1e6;
    bool isNumber = false;
    const double radius = element.getProperty(QStringLiteral("radius")).toDouble(&isNumber);
    const bool isLength = isNumber && radius > 0.0 && radius <= largest;
    return isLength && LinePaths::areAll(element) ? radius : 0.0;
}

void PipeItem::addDrawerTo(Scene3d& scene)
{
    if (scene.isHasDefaultDrawer(Type)) return;
    scene.addDefaultDrawer(Type, makeDrawer(scene, DrawableShaderCylinder().getDrawer(&scene)->clone(),
                                            DrawableShaderSphere().getDrawer(&scene)->clone()));
}

std::unique_ptr<Item3dDrawer> PipeItem::makeDrawer(Scene3d& scene, std::unique_ptr<Item3dDrawer> cylinders,
                                                   std::unique_ptr<Item3dDrawer> balls)
{
    auto drawer = std::make_unique<CompositeDrawer>(&scene);
    drawer->addStage(Cylinders, std::move(cylinders));
    drawer->addStage(Balls, std::move(balls));
    return drawer;
}

void PipeItem::updateDataImpl()
{
    FeatureItem::updateDataImpl();
    const auto* element = static_cast<FeatureElement*>(getModelElement());
    if (!element || !scene()) return;
    const glm::dmat4 toScene = scene()->modelToSceneTransform();
    const double radius = radiusOf(*element);
    m_radius = radius * LinePaths::scaleOf(toScene);
    m_color = FeatureStyle::of(*element).pen.color();
    m_segments.clear();
    m_joints.clear();
    if (!(radius > 0.0)) return;
    for (const FeatureElement::Part& part : element->getParts())
        for (std::size_t i = 1; i < part.points.size(); ++i) {
            const glm::dvec3& from = part.points[i - 1];
            if (part.points[i] != from)
                m_segments.emplace_back(toScene * cylinderBetween(from, part.points[i], radius));
            if (i > 1)
                m_joints.emplace_back(toScene *
                                      glm::scale(glm::translate(glm::dmat4(1.0), from), glm::dvec3(radius)));
        }
}

// One whose radius has been taken away is its lines.
int PipeItem::getDefaultDrawerType() const
{
    const auto* element = static_cast<const FeatureElement*>(getModelElement());
    return element && radiusOf(*element) > 0.0 ? Type : FeatureItem::getDefaultDrawerType();
}

gmx::BoundingBox PipeItem::sceneBoundingBox() const
{
    return LinePaths::grown(FeatureItem::sceneBoundingBox(), m_radius);
}

void PipeItem::draw(const PaintContext& context)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !context.drawer) return;
    if (context.drawMode == DrawMode::GeometryCapture || !(m_radius > 0.0)) {
        FeatureItem::draw(context);
        return;
    }
    const bool isOfBalls = context.stage == Balls;
    const ItemUniforms locations = Item3dDrawer::itemUniforms(context);
    uniforms::set(*gl, locations.itemColor, m_color);
    uniforms::set(*gl, locations.colorMode, ColorMode::Item);
    uniforms::set(*gl, locations.materialMode, 0);
    for (const glm::mat4& place : isOfBalls ? m_joints : m_segments) {
        context.drawer->setTransform(context, place, false);
        if (isOfBalls)
            m_ball.draw(context, 1);
        else
            m_cylinder.draw(context, 1);
    }
}
