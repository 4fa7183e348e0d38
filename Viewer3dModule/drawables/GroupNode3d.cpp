#include <Viewer3dModule/drawables/GroupNode3d.h>

#include <Viewer3dModule/drawers/Item3dDrawerSaver.h>
#include <Viewer3dModule/drawers/PaintContext.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <numeric>
#include <utility>

GroupNode3d::GroupNode3d(std::vector<std::unique_ptr<IDrawableNode3d>> children)
    : m_children(std::move(children))
{
    m_children.erase(std::remove(m_children.begin(), m_children.end(), nullptr), m_children.end());
    if (!m_children.empty()) m_origin = m_children.front()->getOrigin();
}

void GroupNode3d::draw(const PaintContext& context, int instances)
{
    if (!context.drawer) return;
    const auto drawer = ContextualItem3dDrawer::fromContext(context);
    const glm::dmat4 transform = drawer.getTransform();
    for (const auto& child : m_children) {
        const Item3dDrawerSaver saver(drawer);
        drawer.setTransform(glm::mat4(glm::translate(transform, child->getOrigin() - m_origin)), false);
        child->draw(context, instances);
    }
}

gmx::BoundingBox GroupNode3d::getBounds() const
{
    gmx::BoundingBox bounds;
    for (const auto& child : m_children)
        bounds.unite(child->getBounds());
    return bounds;
}

Drawable3dPrimitive::GeometryInfo GroupNode3d::getGeometryInfo() const
{
    Drawable3dPrimitive::GeometryInfo sum;
    for (const auto& child : m_children) {
        const Drawable3dPrimitive::GeometryInfo info = child->getGeometryInfo();
        sum.pointCount += info.pointCount;
        sum.lineCount += info.lineCount;
        sum.triangleCount += info.triangleCount;
    }
    return sum;
}

std::vector<std::unique_ptr<IDrawableNode3d>> GroupNode3d::takeChildren()
{
    return std::exchange(m_children, {});
}

std::vector<glm::vec3> GroupNode3d::getVertices() const
{
    std::vector<glm::vec3> vertices;
    vertices.reserve(static_cast<std::size_t>(getVertexCount()));
    for (const auto& child : m_children) {
        const glm::dvec3 shift = child->getOrigin() - m_origin;
        for (const glm::vec3& vertex : child->getVertices())
            vertices.emplace_back(glm::dvec3(vertex) + shift);
    }
    return vertices;
}

int GroupNode3d::getVertexCount() const
{
    return std::accumulate(m_children.begin(), m_children.end(), 0,
                           [](int sum, const auto& child) { return sum + child->getVertexCount(); });
}

void GroupNode3d::setPointSize(float pixels)
{
    for (const auto& child : m_children)
        child->setPointSize(pixels);
}
