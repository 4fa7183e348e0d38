#pragma once

#include <viewer/elements/MeshElement.h>

#include <Viewer3dModule/host/Graphics3dItem.h>

/// Shows a mesh element. The node's vertices stay floats near the node's origin; the model matrix carries the
/// rest and is composed in doubles, so that large coordinates lose nothing.
class MeshItem : public Graphics3dItem
{
public:
    explicit MeshItem(MeshElement* element);
    /// Frees the node; a context of the share group must be current.
    ~MeshItem() override;

    void updateDataImpl() override;
    int getDefaultDrawerType() const override;
    GeometryInfo getGeometryInfo() override;
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    void takeNode();

    std::unique_ptr<IDrawableNode3d> m_node;
};
