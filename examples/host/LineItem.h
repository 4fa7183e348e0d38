#pragma once

#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElement.h>

#include <utility>

/// What the host keeps in its model: a line, in model coordinates.
class LineElement : public CModelElement
{
public:
    static constexpr int Type = 0x20000001;
    int getType() const override { return Type; }
    std::vector<glm::dvec3> points;
};

/// What the scene shows of it: a red polyline, 3 pixels wide.
class LineItem : public Graphics3dItem
{
public:
    explicit LineItem(LineElement* element)
        : Graphics3dItem(element)
        , m_element(element)
    {
    }

    void updateDataImpl() override
    {
        std::vector<glm::vec3> vertices;
        m_bounds.reset();
        for (const glm::dvec3& point : m_element->points) {
            const glm::dvec3 mapped =
                scene()->mapFromModel(point); // in doubles; only what is near the origin is cut
            m_bounds.unite(mapped);
            vertices.emplace_back(mapped);
        }
        m_line.setVertices(vertices);
    }
    gmx::BoundingBox sceneBoundingBox() const override { return m_bounds; }
    int getDefaultDrawerType() const override { return DrawerType::WideLines; }
    GeometryInfo getGeometryInfo() override { return m_line.getGeometryInfo(); }

protected:
    void draw(const PaintContext& context) override
    {
        m_line.setPen(context, QPen(Qt::red, 3));
        m_line.draw(context, 1);
    }

private:
    LineElement* m_element;
    Polyline3dPrimitive m_line;
    gmx::BoundingBox m_bounds;
};
