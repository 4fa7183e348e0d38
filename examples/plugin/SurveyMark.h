#pragma once

#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElement.h>

#include <array>

/// A point that surveyors measured; the element type that this plug-in adds.
class SurveyMark : public CModelElement
{
public:
    static constexpr int Type = 0x20000002;
    int getType() const override { return Type; }
    glm::dvec3 position{600050.0, 5000050.0, 250.0}; // model coordinates

    void serialize(CQtArchive& archive) override
    {
        CModelElement::serialize(archive);
        archive.beginObject();
        archive.value(position.x);
        archive.value(position.y);
        archive.value(position.z);
        archive.endObject(1);
        archive.finish();
    }
};

/// A mark in a scene: a blue cross lying on the ground, 20 m by 20 m.
class SurveyMarkItem : public Graphics3dItem
{
public:
    explicit SurveyMarkItem(SurveyMark* mark)
        : Graphics3dItem(mark)
        , m_mark(mark)
    {
    }

    void updateDataImpl() override
    {
        const std::array<glm::dvec3, 2> arms = {glm::dvec3(10, 0, 0), glm::dvec3(0, 10, 0)};
        m_bounds.reset();
        for (std::size_t i = 0; i < arms.size(); ++i) {
            const glm::dvec3 from = scene()->mapFromModel(m_mark->position - arms[i]);
            const glm::dvec3 to = scene()->mapFromModel(m_mark->position + arms[i]);
            m_bounds.unite(from);
            m_bounds.unite(to);
            m_arms[i].setVertices({glm::vec3(from), glm::vec3(to)});
        }
    }
    gmx::BoundingBox sceneBoundingBox() const override { return m_bounds; }
    int getDefaultDrawerType() const override { return DrawerType::WideLines; }
    GeometryInfo getGeometryInfo() override { return {0, 2, 0}; }

protected:
    void draw(const PaintContext& context) override
    {
        for (Polyline3dPrimitive& arm : m_arms) {
            arm.setPen(context, QPen(Qt::blue, 3));
            arm.draw(context, 1);
        }
    }

private:
    SurveyMark* m_mark;
    std::array<Polyline3dPrimitive, 2> m_arms;
    gmx::BoundingBox m_bounds;
};
