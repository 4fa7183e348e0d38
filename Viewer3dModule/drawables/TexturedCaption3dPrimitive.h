#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/GlTexture.h>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QFont>
#include <QtGui/QImage>

/// A text or picture pinned to a point: drawn upright, a pixel of it on a pixel of the view at any distance.
/// The point is the lower left corner of the picture, or lies so many pixels beside it as offset() says.
///
/// Made, changed and destroyed while a context of the scene's share group is current: without one a caption
/// has no OpenGL objects and draws nothing. Fonts need a QGuiApplication.
class VIEWER3DMODULE_EXPORT TexturedCaption3dPrimitive : public Drawable3dPrimitive
{
public:
    /// What the caption shows.
    struct Data
    {
        QString text;
        QFont font;
        QColor color;
        double size = 0.2; ///< pixels: the height of the line
        int alignment = 0; ///< Qt::Alignment
    };

    TexturedCaption3dPrimitive();
    /// Takes over the OpenGL objects, position and picture with them; data and offset start anew. The source
    /// draws nothing afterwards and can only be destroyed.
    TexturedCaption3dPrimitive(TexturedCaption3dPrimitive&& other) noexcept;
    TexturedCaption3dPrimitive& operator=(TexturedCaption3dPrimitive&&) = delete;
    TexturedCaption3dPrimitive(const TexturedCaption3dPrimitive&) = delete;
    TexturedCaption3dPrimitive& operator=(const TexturedCaption3dPrimitive&) = delete;
    ~TexturedCaption3dPrimitive() override;

    unsigned int getTextureId() const { return m_texture.name(); }
    unsigned int getVBO() const override { return m_vbo.name(); }
    int getVertexCount() const override { return 1; }
    const Data& getData() const { return m_data; }
    /// Pixels of the picture that is shown; empty before there is one.
    QSize imageSize() const { return m_imageSize; }
    /// From the point to the lower left corner of the picture, in pixels, y up.
    glm::vec2 offset() const { return m_offset; }
    /// Holds until the next setText that centres.
    void setOffset(const glm::vec2& offset) { m_offset = offset; }

    /// The point, item coordinates.
    void setPosition(const glm::vec3& position);
    /// Shows a picture of any format, top row first; nothing for a null one. One with more pixels a side than
    /// the driver takes is scaled down, with a line in the log.
    void setImage(const QImage& image);
    /// Shows a line of text, 2 * size pixels high (the height goes into the data). Qt::AlignHCenter, exactly,
    /// puts the text's middle above the point; any other alignment leaves the offset as it is.
    void setText(const QString& text, const QFont& font, const QColor& color, double size,
                 Qt::Alignment alignment);
    /// Shows text of several lines, which may have markup, in the application's font and those that the
    /// markup names; what is as high as a line of font becomes 2 * size pixels high. Changes neither data
    /// nor offset.
    void setMultiLineText(const QString& text, const QFont& font, const QColor& color, double size);

    /// Nothing in a glue-mask pass and in passes that ask for no points.
    void draw(const PaintContext& context, int instances) override;

private:
    GlTexture m_texture;
    GlBuffer m_vbo;
    QSize m_imageSize{0, 0};
    glm::vec2 m_offset{0.0f};
    Data m_data;
};
