#pragma once

#include <Viewer3dModule/drawables/IDrawableNode3d.h>

/// A file of several parts, each a node of its own.
class VIEWER3DMODULE_EXPORT GroupNode3d : public IDrawableNode3d
{
public:
    explicit GroupNode3d(std::vector<std::unique_ptr<IDrawableNode3d>> children);
    /// Draws nothing: children have origins of their own and are drawn by items of their own.
    void draw(const PaintContext& context, int instances) override;
    gmx::BoundingBox getBounds() const override;
    Drawable3dPrimitive::GeometryInfo getGeometryInfo() const override;
    std::vector<std::unique_ptr<IDrawableNode3d>> takeChildren() override;

private:
    std::vector<std::unique_ptr<IDrawableNode3d>> m_children;
};
