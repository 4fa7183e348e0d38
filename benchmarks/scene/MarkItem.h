#pragma once

#include <benchmarks/scene/MarkElement.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>

/// What the scene shows of a MarkElement: a mark of 5 pixels, which one drawer draws for all of them.
class MarkItem : public Graphics3dItem
{
public:
    static constexpr int DrawerKind = 0x20000B13;

    explicit MarkItem(MarkElement* element)
        : Graphics3dItem(element)
        , m_element(element)
    {
    }
    void updateDataImpl() override { m_place = scene()->mapFromModel(glm::dvec3(m_element->place())); }
    glm::vec3 getVertex(int) override { return glm::vec3(m_place); }
    std::vector<glm::vec3> getVertices() override { return {glm::vec3(m_place)}; }
    int getNodePointsCount() const override { return 1; }
    gmx::BoundingBox sceneBoundingBox() const override { return {m_place, m_place}; }
    int getDefaultDrawerType() const override { return DrawerKind; }

private:
    MarkElement* m_element;
    glm::dvec3 m_place{0.0};
};
