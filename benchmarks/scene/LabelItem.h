#pragma once

#include <benchmarks/scene/LabelElement.h>

#include <Viewer3dModule/drawers/MultiGlyphItem3dDrawer.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>

/// What the scene shows of a LabelElement: its text to the right of the point, by glyphs.
class LabelItem : public Graphics3dItem
{
public:
    static constexpr int DrawerKind = 0x20000B14;
    using Glyphs = MultiGlyphItem3dDrawer::GlyphList;

    explicit LabelItem(LabelElement* element)
        : Graphics3dItem(element)
        , m_element(element)
    {
    }
    void updateDataImpl() override { m_place = scene()->mapFromModel(glm::dvec3(m_element->place())); }
    gmx::BoundingBox sceneBoundingBox() const override { return {m_place, m_place}; }
    int getDefaultDrawerType() const override { return DrawerKind; }

    glm::vec3 anchor() const { return glm::vec3(m_place); }
    /// Laid out at the first call.
    const Glyphs& glyphs();

private:
    LabelElement* m_element;
    glm::dvec3 m_place{0.0};
    Glyphs m_glyphs;
};

/// Draws the texts of all LabelItems.
class LabelItemDrawer : public MultiGlyphItem3dDrawer
{
public:
    explicit LabelItemDrawer(Scene3d* scene);
    std::unique_ptr<Item3dDrawer> clone() const override;

    using MultiGlyphItem3dDrawer::getGlyphs;
    glm::vec3 getAnchor(Graphics3dItem* item) override;
    float getGlyphHeight(Graphics3dItem*) override { return 0.0f; } // as laid out
    int getGlyphCount(Graphics3dItem* item) override;
    GlyphList getGlyphs(Graphics3dItem* item) override;
};
