#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>

#include <QtGui/QColor>

/// The points of a feature. Shows the highlight of the feature's item, which owns it.
class FeaturePoints : public Drawable3dItem
{
public:
    /// owner is not owned. Points are relative to an origin, which the model matrix has to carry; size in
    /// pixels.
    FeaturePoints(const Drawable3dItem& owner, std::vector<glm::vec3> points, const QColor& color,
                  float size);
    ~FeaturePoints() override;

    int getDefaultDrawerType() const override { return m_node.getDrawerType(); }
    bool isHighlighted() const override { return m_owner.isHighlighted(); }
    unsigned int getGlueMask() const override { return m_owner.getGlueMask(); }
    GeometryInfo getGeometryInfo() override { return m_node.getGeometryInfo(); }
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    const Drawable3dItem& m_owner;
    MeshNode3d m_node;
};
