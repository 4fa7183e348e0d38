#include <Viewer3dModule/drawables/TexturedCaption3dPrimitive.h>

#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawables/captionImages.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <framework/ksp/Log.h>

#include <utility>

namespace {

constexpr double sizeToHeight = 2.0; // a size is half of the height in pixels

QImage fitting(OpenGLFunctions& gl, const QImage& image)
{
    const QImage fitted = GlTexture::fitting(gl, image);
    if (fitted.size() != image.size())
        ksp::Log::warning(
            QStringLiteral("The picture of a caption, %1 x %2 pixels, is scaled down: this driver takes at "
                           "most %3 pixels a side")
                .arg(image.width())
                .arg(image.height())
                .arg(GlTexture::longestSide(gl)));
    return fitted;
}

} // namespace

TexturedCaption3dPrimitive::TexturedCaption3dPrimitive()
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return;
    m_vbo.upload(*gl, std::vector<glm::vec3>(1), GL_STATIC_DRAW);
    m_texture.generate(*gl);
    gl->glGetError();
}

TexturedCaption3dPrimitive::TexturedCaption3dPrimitive(TexturedCaption3dPrimitive&& other) noexcept
    : m_texture(std::move(other.m_texture))
    , m_vbo(std::move(other.m_vbo))
    , m_imageSize(std::exchange(other.m_imageSize, QSize(0, 0)))
{
}

TexturedCaption3dPrimitive::~TexturedCaption3dPrimitive() = default;

void TexturedCaption3dPrimitive::setPosition(const glm::vec3& position)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || m_vbo.name() == 0) return;
    m_vbo.replace(*gl, 0, position);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void TexturedCaption3dPrimitive::setImage(const QImage& image)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || m_texture.name() == 0) return;
    const QImage pixels = fitting(*gl, image);
    m_texture.uploadTopDown(*gl, pixels);
    m_imageSize = pixels.size();
}

void TexturedCaption3dPrimitive::setText(const QString& text, const QFont& font, const QColor& color,
                                         double size, Qt::Alignment alignment)
{
    const double height = size * sizeToHeight;
    m_data = {text, font, color, height, static_cast<int>(alignment)};
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return;
    const QImage image = caption_images::ofLine(text, font, color, height, GlTexture::longestSide(*gl));
    if (alignment == Qt::AlignHCenter) m_offset.x = static_cast<float>(image.width()) * -0.5f;
    setImage(image);
}

void TexturedCaption3dPrimitive::setMultiLineText(const QString& text, const QFont& font, const QColor& color,
                                                  double size)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return;
    setImage(caption_images::ofText(text, font, color, size * sizeToHeight, GlTexture::longestSide(*gl)));
}

void TexturedCaption3dPrimitive::draw(const PaintContext& context, int instances)
{
    if (context.drawMode == DrawMode::GlueMaskDraw || (context.primitives & PrimitiveBit::Points) == 0)
        return;
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || m_imageSize.isEmpty()) return;
    {
        VertexArrayBinding binding(*gl, context);
        binding.setFloats(VertexAttribute::Coords, 3, m_vbo);
        binding.ready();
        gl->glActiveTexture(GL_TEXTURE0);
        gl->glBindTexture(GL_TEXTURE_2D, m_texture.name());
        gl->glDrawArraysInstanced(GL_POINTS, 0, 1, instances);
    }
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    gl->glGetError();
}
