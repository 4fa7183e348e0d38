#pragma once

#include <benchmarks/scene/LineElement.h>

#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>
#include <Viewer3dModule/host/Graphics3dItem.h>

/// What the scene shows of a LineElement.
class LineItem : public Graphics3dItem
{
public:
    explicit LineItem(LineElement* element);
    ~LineItem() override;

    void updateDataImpl() override;
    gmx::BoundingBox sceneBoundingBox() const override { return m_bounds; }
    int getDefaultDrawerType() const override;
    bool describeDrawing(ItemDrawing& drawing) override;
    GeometryInfo getGeometryInfo() override { return m_line.getGeometryInfo(); }

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    LineElement* m_element;
    Polyline3dPrimitive m_line{Polyline3dPrimitive::Storage::Shared};
    LinePen m_pen;
    gmx::BoundingBox m_bounds;
};
