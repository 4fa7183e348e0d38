#include <Viewer3dModule/drawables/GlTexture.h>

#include <utility>

namespace {

// Four bytes a pixel, red first, the lowest row first.
QImage bottomUp(QImage image)
{
    return std::move(image).convertToFormat(QImage::Format_RGBA8888).mirrored();
}

// Red, green, blue, alpha, a byte each, without gaps between the rows.
QImage packed(const QImage& image)
{
    const QImage pixels = image.convertToFormat(QImage::Format_RGBA8888);
    return pixels.bytesPerLine() == 4 * pixels.width() ? pixels : pixels.copy();
}

} // namespace

GlTexture::GlTexture(GlTexture&& other) noexcept
    : m_name(std::exchange(other.m_name, 0))
{
}

GlTexture& GlTexture::operator=(GlTexture&& other) noexcept
{
    std::swap(m_name, other.m_name);
    return *this;
}

GlTexture::~GlTexture()
{
    if (m_name == 0) return;
    if (OpenGLFunctions* gl = currentGLFunctions()) gl->glDeleteTextures(1, &m_name);
}

void GlTexture::generate(OpenGLFunctions& gl)
{
    if (m_name == 0) gl.glGenTextures(1, &m_name);
}

int GlTexture::longestSide(OpenGLFunctions& gl)
{
    GLint side = 0;
    gl.glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    return side;
}

QImage GlTexture::fitting(OpenGLFunctions& gl, const QImage& image)
{
    const int longest = longestSide(gl);
    if (image.width() <= longest && image.height() <= longest) return image;
    return image.scaled(longest, longest, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

void GlTexture::upload(OpenGLFunctions& gl, const QImage& image)
{
    if (image.isNull()) return;
    const QImage pixels = bottomUp(fitting(gl, image));
    generate(gl);
    gl.glBindTexture(GL_TEXTURE_2D, m_name);
    gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, pixels.width(), pixels.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                    pixels.constBits());
    gl.glGenerateMipmap(GL_TEXTURE_2D);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    gl.glBindTexture(GL_TEXTURE_2D, 0);
}

void GlTexture::setWrap(OpenGLFunctions& gl, const ImageWrap& wrap)
{
    if (m_name == 0) return;
    constexpr GLint modes[] = {GL_REPEAT, GL_MIRRORED_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_BORDER};
    const GLfloat border[] = {
        static_cast<GLfloat>(wrap.border.redF()), static_cast<GLfloat>(wrap.border.greenF()),
        static_cast<GLfloat>(wrap.border.blueF()), static_cast<GLfloat>(wrap.border.alphaF())};
    gl.glBindTexture(GL_TEXTURE_2D, m_name);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, modes[wrap.mode]);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, modes[wrap.mode]);
    gl.glTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, border);
    gl.glBindTexture(GL_TEXTURE_2D, 0);
}

void GlTexture::uploadTopDown(OpenGLFunctions& gl, const QImage& image)
{
    const QImage pixels = packed(image);
    generate(gl);
    gl.glBindTexture(GL_TEXTURE_2D, m_name);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, pixels.width(), pixels.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                    pixels.constBits());
    if (!pixels.isNull()) gl.glGenerateMipmap(GL_TEXTURE_2D);
    gl.glBindTexture(GL_TEXTURE_2D, 0);
}
