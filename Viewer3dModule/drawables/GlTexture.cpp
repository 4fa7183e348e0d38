#include <Viewer3dModule/drawables/GlTexture.h>

#include <utility>

namespace {

// Four bytes a pixel, red first, the lowest row first.
QImage pixelsOf(const QImage& image, int maxSize)
{
    const bool fits = image.width() <= maxSize && image.height() <= maxSize;
    QImage scaled =
        fits ? image : image.scaled(maxSize, maxSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return std::move(scaled).convertToFormat(QImage::Format_RGBA8888).mirrored();
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

void GlTexture::upload(OpenGLFunctions& gl, const QImage& image)
{
    if (image.isNull()) return;
    const QImage pixels = pixelsOf(image, longestSide(gl));
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
