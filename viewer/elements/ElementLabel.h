#pragma once

#include <Viewer3dModule/drawables/CaptionsDrawable3dItem.h>

#include <QtCore/QRect>

#include <functional>
#include <optional>

class Graphics3dItem;
class LabelDrawer;

/// The label of one element: dark letters with a light rim, which can be read on anything. Nothing of it is
/// made before it is first written. The drawer of labels writes it, and only that.
class ElementLabel : public CaptionsDrawable3dItem
{
public:
    /// Says where the label belongs, in item coordinates.
    using Place = std::function<glm::dvec3()>;

    /// owner: the element's item, which owns this one. lift: pixels from the place to the lower edge of the
    /// letters; nothing: the middle of the letters lies there.
    ElementLabel(const Graphics3dItem& owner, LabelDrawer& drawer, const QString& text, Place place,
                 std::optional<float> lift);
    ~ElementLabel() override;

    /// Names of elements as they are written: one line, of at most 60 characters.
    static QString shownText(const QString& text);

    const Graphics3dItem& owner() const { return m_owner; }
    /// Item coordinates.
    const glm::dvec3& place();
    /// The pixels that it takes where its place lies at this one.
    QRect rectAt(const glm::dvec2& pixel);
    /// Has the next draw put its lower left corner there, pixels of the pass, y down.
    void setCorner(const glm::dvec2& pixel) { m_corner = pixel; }

    using CaptionsDrawable3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    const QImage& image();

    const Graphics3dItem& m_owner;
    QString m_text;
    Place m_findPlace;
    std::optional<float> m_lift;
    std::optional<glm::dvec3> m_place;
    QImage m_image; // until it is a caption
    QSize m_size;
    glm::dvec2 m_corner{0.0};
};
