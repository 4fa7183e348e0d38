#pragma once

#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawers/PaintContext.h>

#include <glm/glm.hpp>

#include <functional>
#include <vector>

/// An item of an element that draws by a function and knows its vertices.
class DrawnItem : public Graphics3dItem
{
public:
    DrawnItem(TestElement* element, LONGID itemId, int type)
        : Graphics3dItem(element)
        , m_id(itemId)
        , m_drawerType(type)
    {
    }

    LONGID getId() const override { return m_id; }
    int getDefaultDrawerType() const override { return m_drawerType; }
    gmx::BoundingBox sceneBoundingBox() const override { return box; }
    GeometryInfo getGeometryInfo() override { return info; }

    void updateDataImpl() override
    {
        if (updating) updating();
    }
    bool describeDrawing(ItemDrawing& drawn) override { return describing && describing(drawn); }
    using Drawable3dItem::drawingChanged;

    std::function<void(const PaintContext&)> drawing;
    std::function<bool(ItemDrawing&)> describing; ///< what is drawn, where there is anything to tell
    std::function<void()> updating;               ///< what an update of the scene does
    gmx::BoundingBox box;                         ///< scene coordinates
    std::vector<glm::dvec3> vertices;             ///< scene coordinates
    GeometryInfo info;                            ///< all zeros: the item gives no vertices to the scene
    int draws = 0;                                ///< since the test set it to 0

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override
    {
        ++draws;
        if (drawing) drawing(context);
    }

private:
    LONGID m_id;
    int m_drawerType;
};
