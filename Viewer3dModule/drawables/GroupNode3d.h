#pragma once

#include <Viewer3dModule/drawables/IDrawableNode3d.h>

/// A file of several parts, each a node with an origin of its own. Null children are dropped.
class VIEWER3DMODULE_EXPORT GroupNode3d : public IDrawableNode3d
{
public:
    explicit GroupNode3d(std::vector<std::unique_ptr<IDrawableNode3d>> children);
    /// Draws the children that were not taken, each at its place relative to the group's origin. Whoever
    /// wants them to be elements of their own takes them. Shifts are composed in doubles, but onto the
    /// drawer's model matrix, which is floats: a child is off by no more than a float's step of the group's
    /// and its own place in the scene.
    void draw(const PaintContext& context, int instances) override;
    /// That of the first child.
    glm::dvec3 getOrigin() const override { return m_origin; }
    gmx::BoundingBox getBounds() const override;
    Drawable3dPrimitive::GeometryInfo getGeometryInfo() const override;
    std::vector<std::unique_ptr<IDrawableNode3d>> takeChildren() override;
    /// Those of the children, one child after the other.
    std::vector<glm::vec3> getVertices() const override;
    int getVertexCount() const override;
    void setPointSize(float pixels) override;

private:
    glm::dvec3 m_origin = glm::dvec3(0.0);
    std::vector<std::unique_ptr<IDrawableNode3d>> m_children;
};
