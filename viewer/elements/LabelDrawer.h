#pragma once

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <QtCore/QSize>
#include <QtCore/QString>

class ILabel;
class NameDrawer;

/// Writes the labels of elements over a finished frame, upright, on whole pixels, whatever stands before
/// them, and none over another one: of labels that would meet, that of the element that came first is
/// written. So they are no part of the scene's own passes: nothing is selected by its label, and labels have
/// no depth.
class LabelDrawer : public SequentialItem3dDrawer
{
public:
    static constexpr int VisibilityType = 0x36FFD103;

    ~LabelDrawer() override;

    /// Lets the elements that come from now on have labels; before the first one comes. property: whose text
    /// is written; of "name" that of the element.
    static void addTo(Scene3d& scene, const QString& property);
    /// The scene's; null without.
    static LabelDrawer* find(const Scene3d& scene);

    const QString& property() const { return m_property; }
    /// Holds for elements that come from now on.
    void setProperty(const QString& property) { m_property = property; }
    bool isShown() const { return m_isShown; }
    /// Whether labels are written; true at first.
    void setShown(bool shown) { m_isShown = shown; }

    /// Writes the labels of a frame to the bound target, whose state is that of a frame. The pass covers a
    /// part of the frame, with the pixel corner as its upper left one; which labels are written, and on which
    /// pixels, depends on the frame alone.
    /// @param viewProjection  of the whole frame, whose size is given in pixels
    void write(const PaintContext& pass, const glm::dmat4& viewProjection, const QSize& size,
               const QPoint& corner);

    /// Draws the names of points, which are labels like all others, by their glyphs. Made at the first
    /// request, with the scene's context current.
    NameDrawer& names();
    /// Gives up the pictures of letters that no name has any more, once there are no names; with the scene's
    /// context current.
    void freeUnused();

    /// Nothing: labels wait for write.
    void draw(const PaintContext& context, Filter filter) override;
    std::unique_ptr<Item3dDrawer> clone() const override;

private:
    LabelDrawer(Scene3d* scene, QOpenGLShaderProgram* program, const QString& property);

    using Labels = std::vector<std::pair<ILabel*, const Drawable3dItem*>>;
    Labels labelsByElement() const;

    QString m_property;
    std::unique_ptr<NameDrawer> m_names; // null before there are names
    bool m_isShown = true;
};
