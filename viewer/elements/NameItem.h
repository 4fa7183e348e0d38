#pragma once

#include <viewer/elements/ILabel.h>

#include <Viewer3dModule/drawers/MultiGlyphItem3dDrawer.h>
#include <Viewer3dModule/host/Graphics3dItem.h>

#include <QtCore/QString>

class NameDrawer;

/// The name of an element that is shown by a mark: dark letters with a light rim, centred above a point. It
/// has no glyphs before it is first written, of very many names most are not, and is laid out again only when
/// its text changes; the drawer of names draws it. It is not highlighted with its element: letters and rim
/// would have one colour.
class NameItem : public Graphics3dItem, public ILabel
{
public:
    /// lift: pixels from the point to the lower edge of the letters.
    NameItem(CModelElement* element, NameDrawer& drawer, const QString& text, float lift);
    ~NameItem() override;

    const QString& text() const { return m_text; }
    void setText(const QString& text, float lift);
    /// Scene coordinates.
    const glm::dvec3& place() const { return m_place; }
    void setPlace(const glm::dvec3& place);

    LONGID elementId() const override { return getId(); }
    /// Where the drawer has it, which knows floats.
    glm::dvec3 scenePlace() override { return glm::dvec3(glm::vec3(m_place)); }
    QRect rectAt(const glm::dvec2& pixel) override;
    /// Makes the glyphs, which find their pixels by themselves, when there are none.
    void setCorner(const glm::dvec2& pixel) override;
    /// The glyphs, about the place; none before the name is written.
    const MultiGlyphItem3dDrawer::GlyphList& letters() const { return m_letters; }
    const MultiGlyphItem3dDrawer::GlyphList& rims() const { return m_rims; }

    bool isHighlighted() const override { return false; }
    gmx::BoundingBox sceneBoundingBox() const override { return {m_place, m_place}; }

private:
    const QRect& rect();
    void layOut();

    QString m_text;
    float m_lift;
    glm::dvec3 m_place{0.0};
    QRect m_rect; // pixels about the place, y down; null until it is asked for
    bool m_isLaidOut = false;
    MultiGlyphItem3dDrawer::GlyphList m_letters, m_rims;
};
