#pragma once

#include <Viewer3dModule/drawers/MultiGlyphItem3dDrawer.h>

class NameItem;

/// Draws the names of all NameItems with a draw call a glyph of the alphabet: the rims of all, then the
/// letters. Items of other classes are not for it.
class NameDrawer : public MultiGlyphItem3dDrawer
{
public:
    explicit NameDrawer(Scene3d* scene);
    ~NameDrawer() override;

    void draw(const PaintContext& context, Filter filter) override;
    using MultiGlyphItem3dDrawer::updateItem;
    void updateItem(int index) override;
    /// With the same program.
    std::unique_ptr<Item3dDrawer> clone() const override;

    glm::vec3 getAnchor(Graphics3dItem* item) override;
    float getGlyphHeight(Graphics3dItem* item) override;
    int getGlyphCount(Graphics3dItem* item) override;
    using MultiGlyphItem3dDrawer::getGlyphs;
    GlyphList getGlyphs(Graphics3dItem* item) override;

private:
    class Rims;
    NameDrawer(const NameDrawer& other);
    void addRims();

    std::unique_ptr<Rims> m_rims; // of the same items
};
