#pragma once

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/host/Graphics3dItem.h>

#include <memory>
#include <optional>

class CityObjectElement;
class ElementLabel;

/// Shows a city object: its surfaces with the colours or pictures that they have, otherwise those of their
/// kinds, its lines and points. Vertices are floats relative to the middle of the object; the model matrix
/// carries the rest in doubles. Its label stands in the middle of its box, at the upper end.
class CityObjectItem : public Graphics3dItem
{
public:
    /// pointSize (pixels) is that of all points; 6 without it.
    explicit CityObjectItem(CityObjectElement* element, std::optional<float> pointSize = {});
    /// Frees the mesh; a context of the share group must be current.
    ~CityObjectItem() override;

    void updateData(ISubject* subject) override;
    void updateDataImpl() override;
    void updateVisibility() override;
    int getDefaultDrawerType() const override;
    bool describeDrawing(ItemDrawing& drawing) override;
    GeometryInfo getGeometryInfo() override;
    /// Reads them back in the scene's context; the caller's is current afterwards.
    std::vector<glm::vec3> getVertices() override;
    int getNodePointsCount() const override;
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    void renewLabel(const CityObjectElement& element);

    std::optional<float> m_pointSize;
    std::unique_ptr<MeshNode3d> m_node;    // null before the first update
    std::unique_ptr<ElementLabel> m_label; // null without
    bool m_isChanged = true;
};
