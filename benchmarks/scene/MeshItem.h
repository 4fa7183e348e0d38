#pragma once

#include <benchmarks/scene/MeshElement.h>

#include <Viewer3dModule/host/Graphics3dItem.h>

/// What the scene shows of a MeshElement.
class MeshItem : public Graphics3dItem
{
public:
    explicit MeshItem(MeshElement* element);
    ~MeshItem() override;

    void updateDataImpl() override;
    gmx::BoundingBox sceneBoundingBox() const override { return m_bounds; }
    int getDefaultDrawerType() const override { return m_node->getDrawerType(); }
    bool describeDrawing(ItemDrawing& drawing) override { return m_node->describeDrawing(drawing); }
    GeometryInfo getGeometryInfo() override { return m_node->getGeometryInfo(); }
    int getNodePointsCount() const override { return m_node->getVertexCount(); }

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override { m_node->draw(context, 1); }

private:
    MeshElement* m_element;
    std::unique_ptr<MeshNode3d> m_node;
    gmx::BoundingBox m_bounds;
};
