#pragma once

#include <viewer/elements/ElementLabel.h>
#include <viewer/elements/FeatureStyle.h>
#include <viewer/elements/NameItem.h>

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <framework/model/FeatureElement.h>

#include <memory>

/// Shows a feature: its lines and rings with the pen that its properties ask for, its points, and its
/// label, where the scene has labels.
///
/// The vertices are floats relative to an origin of the item's own, subtracted in doubles; the model matrix
/// carries the origin. So features that are a millimetre apart stay so, wherever they lie.
class FeatureItem : public Graphics3dItem
{
public:
    /// pointSize (pixels): see FeatureStyle::of.
    explicit FeatureItem(FeatureElement* element, std::optional<float> pointSize = {});
    ~FeatureItem() override;

    void updateData(ISubject* subject) override;
    void updateDataImpl() override;
    void updateVisibility() override;
    int getDefaultDrawerType() const override;
    /// Of features that have lines only.
    bool describeDrawing(ItemDrawing& drawing) override;
    GeometryInfo getGeometryInfo() override { return m_info; }
    /// Those of the lines, a ring's first one repeated at its end, then the points. Those of areas are among
    /// them, but for the feet of walls.
    std::vector<glm::vec3> getVertices() override;
    int getNodePointsCount() const override { return m_vertexCount; }
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;
    /// Pixels from the place of a point upwards that its name leaves free.
    virtual float markReach() const { return m_style.pointSize / 2.0f; }

private:
    void rebuild(const FeatureElement& element);
    void rebuildAreas(const FeatureElement& element);
    void drawPoints(const PaintContext& context);
    void renewLabel(const FeatureElement& element);
    void writeName(LabelDrawer& labels, const QString& text);

    std::optional<float> m_pointSize;
    FeatureStyle m_style;
    gmx::BoundingBox m_bounds; // model coordinates
    glm::dvec3 m_origin{0.0};  // model coordinates
    PolyPolyline3dItem m_lines;
    std::unique_ptr<MeshNode3d> m_points;  // null without, and before they are first drawn
    std::unique_ptr<MeshNode3d> m_areas;   // null without
    std::unique_ptr<ElementLabel> m_label; // null without, and of points
    std::unique_ptr<NameItem> m_name;      // of points; null without
    GeometryInfo m_info;
    int m_vertexCount = 0;
    bool m_isChanged = true;
};
