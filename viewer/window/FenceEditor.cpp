#include <viewer/window/FenceEditor.h>

#include <viewer/window/View3dWidget.h>

#include <Viewer3dModule/fences/fence_outline.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Fence3dOutlineItem.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <limits>

namespace {

constexpr double nearestPlane = 0.1;  // model units from the eye, as near as an end plane can be moved
constexpr double slack = 0.01;        // of the depth of what is visible, so that nothing lies on a plane
constexpr double smallestSine = 0.02; // between a line of sight and one that a node is dragged along

struct Depths
{
    double nearest;
    double farthest;
};

Depths depthsOf(const gmx::BoundingBox& box, const Viewpoint& viewpoint)
{
    Depths depths{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const glm::dvec3& corner : box.getCorners()) {
        depths.nearest = std::min(depths.nearest, viewpoint.depthOf(corner));
        depths.farthest = std::max(depths.farthest, viewpoint.depthOf(corner));
    }
    const double margin = slack * (depths.farthest - depths.nearest);
    return {depths.nearest - margin, depths.farthest + margin};
}

} // namespace

FenceEditor::FenceEditor(View3dWidget& view, Scene3d& scene, CProject& project, QObject* parent)
    : QObject(parent)
    , m_view(view)
    , m_scene(scene)
    , m_project(project)
    , m_display(scene)
{
}

Fence3dItem& FenceEditor::element() const
{
    return fenceElement(m_project);
}

FenceShape FenceEditor::sweptArea(const QPolygonF& places) const
{
    const glm::dmat4 toModel = m_scene.sceneToModelTransform();
    const Viewpoint viewpoint = m_view.viewpoint().transformed(toModel);
    Depths depths = depthsOf(m_view.visibleBounds().transformed(toModel), viewpoint);
    if (!viewpoint.isParallel()) depths.nearest = std::max(depths.nearest, nearestPlane);
    if (places.size() < 3 || !(depths.farthest > depths.nearest)) return {};
    const double inScene = depths.nearest * glm::length(glm::dvec3(m_scene.modelToSceneTransform()[0]));
    std::vector<glm::dvec3> points;
    for (const QPointF& place : places)
        points.push_back(m_scene.mapToModel(m_view.pointAtDepth(place, inScene)));
    if (points.front() != points.back()) points.push_back(points.front());
    const CCamera& camera = viewpoint.camera();
    if (viewpoint.isParallel()) {
        PrismFence prism;
        prism.prism().setFence({}, camera.getDirection(), 0.0, depths.nearest, depths.farthest, points);
        return prism.empty() ? FenceShape() : FenceShape(prism);
    }
    const glm::dmat4 frame = glm::scale(glm::dmat4(1.0), glm::dvec3(1.0, 1.0, -1.0)) * camera.getViewMatrix();
    Frustum3D frustum;
    frustum.setFence(camera.getPosition(), camera.getDirection(),
                     viewpoint.unitsPerPixel(1.0, QSizeF(1.0, 1.0)) / 2.0, depths.nearest, depths.farthest,
                     points, frame);
    return frustum.empty() ? FenceShape() : FenceShape(frustum);
}

FenceShape FenceEditor::ball(const glm::dvec3& center, double radius) const
{
    SphereFence sphere;
    sphere.setFence(m_scene.mapToModel(center),
                    radius * glm::length(glm::dvec3(m_scene.sceneToModelTransform()[0])));
    return sphere;
}

// --- the fence that is drawn
// ------------------------------------------------------------------------------------------

void FenceEditor::begin()
{
    if (!m_before) m_before = shapeOf(element());
    element().setInteractionMode(true);
}

void FenceEditor::preview(const FenceShape& shape)
{
    begin();
    setShape(element(), std::holds_alternative<std::monostate>(shape) ? *m_before : shape);
}

void FenceEditor::accept(const FenceShape& shape)
{
    preview(shape);
    endMove(true);
}

void FenceEditor::giveUp()
{
    endMove(false);
}

void FenceEditor::endMove(bool keep)
{
    if (!m_before) return;
    if (!keep) setShape(element(), *m_before);
    m_before.reset();
    element().setInteractionMode(false);
    if (keep) Q_EMIT fenceChanged();
}

void FenceEditor::remove()
{
    giveUp();
    if (!hasFence()) return;
    element().reset();
    Q_EMIT fenceChanged();
}

bool FenceEditor::hasFence() const
{
    return !element().empty();
}

// --- its nodes
// ----------------------------------------------------------------------------------------------------------

std::vector<std::optional<QPointF>> FenceEditor::places() const
{
    std::vector<std::optional<QPointF>> places;
    if (const Fence3dOutlineItem* item = m_display.item())
        for (const glm::dvec3& node : item->getNodePoints())
            places.push_back(m_view.placeOf(node));
    return places;
}

/// The point of the line, in the scene, that is nearest to the line of sight through the place; none where
/// the two run alongside.
std::optional<glm::dvec3> FenceEditor::pointOnLine(const std::pair<glm::dvec3, glm::dvec3>& line,
                                                   const QPointF& place) const
{
    const glm::dvec3 axis = glm::normalize(line.second - line.first);
    const glm::dvec3 eye = m_view.pointAtDepth(place, 1.0);
    const glm::dvec3 sight = glm::normalize(m_view.pointAtDepth(place, 2.0) - eye);
    const double cosine = glm::dot(axis, sight);
    const double sine2 = 1.0 - cosine * cosine;
    if (sine2 < smallestSine * smallestSine) return std::nullopt;
    const glm::dvec3 from = line.first - eye;
    return line.first + (cosine * glm::dot(sight, from) - glm::dot(axis, from)) / sine2 * axis;
}

std::size_t FenceEditor::moveNode(std::size_t node, const QPointF& place)
{
    begin();
    const std::shared_ptr<Fence3DObject> fence = element().getFence();
    if (!fence) return node;
    const std::vector<glm::dvec3> nodes = fence_outline::nodes(*fence);
    if (nodes.empty()) return node;
    std::optional<glm::dvec3> point;
    if (const auto line = fence_outline::lineOf(*fence, node))
        point = pointOnLine({m_scene.mapFromModel(line->first), m_scene.mapFromModel(line->second)}, place);
    else // across the line of sight; a ball's surface as far from its centre as it is seen
        point = m_view.pointAtDepth(place, m_view.viewpoint().depthOf(m_scene.mapFromModel(nodes.front())));
    if (!point) return node;
    const std::size_t now = fence_outline::moveNode(*fence, node, m_scene.mapToModel(*point));
    element().notifyObservers();
    return now;
}
