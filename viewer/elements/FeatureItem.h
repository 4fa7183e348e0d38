#pragma once

#include <viewer/elements/FeaturePoints.h>
#include <viewer/elements/FeatureStyle.h>

#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <framework/model/FeatureElement.h>

#include <memory>

/// Shows a feature: its lines and rings with the pen that its properties ask for, and its points.
///
/// The vertices are floats relative to an origin of the item's own, subtracted in doubles; the model matrix
/// carries the origin. So features that are a millimetre apart stay so, wherever they lie.
class FeatureItem : public Graphics3dItem
{
public:
    explicit FeatureItem(FeatureElement* element);
    ~FeatureItem() override;

    void updateData(ISubject* subject) override;
    void updateDataImpl() override;
    void updateVisibility() override;
    int getDefaultDrawerType() const override;
    GeometryInfo getGeometryInfo() override;
    std::vector<glm::vec3> getVertices() override;
    gmx::BoundingBox sceneBoundingBox() const override;
    /// The points, where the lines need a drawer that draws none.
    std::vector<Drawable3dItem*> getDrawableChildren() override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    void rebuild(const FeatureElement& element);
    bool drawsPointsItself() const { return !m_hasLines; }

    FeatureStyle m_style;
    gmx::BoundingBox m_bounds; // model coordinates
    glm::dvec3 m_origin{0.0};  // model coordinates
    PolyPolyline3dItem m_lines;
    std::unique_ptr<FeaturePoints> m_points;
    GeometryInfo m_info;
    bool m_hasLines = false;
    bool m_isChanged = true;
};
