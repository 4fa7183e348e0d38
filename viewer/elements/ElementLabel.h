#pragma once

#include <viewer/elements/ILabel.h>

#include <Viewer3dModule/drawables/CaptionsDrawable3dItem.h>

#include <functional>
#include <optional>

class Graphics3dItem;
class LabelDrawer;

/// The label of one element: dark letters with a light rim, which can be read on anything. Nothing of it is
/// made before it is first written. The drawer of labels writes it, and only that.
class ElementLabel : public CaptionsDrawable3dItem, public ILabel
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

    LONGID elementId() const override;
    /// Item coordinates.
    const glm::dvec3& place();
    glm::dvec3 scenePlace() override;
    QRect rectAt(const glm::dvec2& pixel) override;
    void setCorner(const glm::dvec2& pixel) override { m_corner = pixel; }

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
