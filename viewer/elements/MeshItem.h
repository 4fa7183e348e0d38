#pragma once

#include <viewer/elements/MeshElement.h>

#include <Viewer3dModule/host/Graphics3dItem.h>

#include <optional>

/// Shows a mesh element. The node's vertices stay floats near the node's origin; the model matrix carries the
/// rest and is composed in doubles, so that large coordinates lose nothing.
class MeshItem : public Graphics3dItem
{
public:
    /// pointSize (pixels) is that of all points; without it they have the node's.
    explicit MeshItem(MeshElement* element, std::optional<float> pointSize = {});
    /// Frees the node; a context of the share group must be current.
    ~MeshItem() override;

    void updateDataImpl() override;
    int getDefaultDrawerType() const override;
    bool describeDrawing(ItemDrawing& drawing) override;
    GeometryInfo getGeometryInfo() override;
    /// The node's vertices: model coordinates minus the node's origin. Reads them back in the scene's
    /// context; the caller's is current afterwards.
    std::vector<glm::vec3> getVertices() override;
    int getNodePointsCount() const override;
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    void takeNode();

    std::unique_ptr<IDrawableNode3d> m_node;
    std::optional<float> m_pointSize;
};
