#include <Viewer3dModule/drawables/IconTexture.h>

#include <Viewer3dModule/drawables/vertex_attributes.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtGui/QIcon>
#include <QtGui/QImage>

#include <utility>

namespace {

QImage scaledTo(const QImage& image, const QSize& size)
{
    if (image.isNull()) return image;
    return image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

} // namespace

IconTexture::IconTexture(const QIcon& icon, const QSize& size)
{
    create(scaledTo(icon.pixmap(size, QIcon::Normal, QIcon::Off).toImage(), size));
}

IconTexture::IconTexture(const QImage& image)
{
    create(image);
}

IconTexture::IconTexture(const QString& fileName, const QSize& size)
{
    const QImage image(fileName);
    create(size.isNull() ? image : scaledTo(image, size));
}

IconTexture::IconTexture(IconTexture&& other) noexcept
    : m_texture(std::move(other.m_texture))
    , m_offset(std::exchange(other.m_offset, glm::vec2(0.0f)))
    , m_size(std::exchange(other.m_size, QSize()))
{
}

IconTexture::~IconTexture() = default;

void IconTexture::create(const QImage& image)
{
    if (image.isNull()) return;
    OpenGLFunctions* gl = getGLFunctions();
    const QImage pixels = gl ? GlTexture::fitting(*gl, image) : image;
    m_size = pixels.size();
    m_offset = glm::vec2(m_size.width(), m_size.height()) * 0.5f;
    if (gl) m_texture.uploadTopDown(*gl, pixels);
}

void IconTexture::draw(const PaintContext& context, int instances)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || !context.program || (context.primitives & PrimitiveBit::Points) == 0) return;
    const ItemUniforms locations = Item3dDrawer::itemUniforms(context);
    uniforms::set(*gl, locations.offset, -m_offset);
    // As captions set them, whose program it is: the point is the lower left corner, the top row is the
    // first.
    uniforms::set(*gl, locations.textureTop, 0.0f);
    uniforms::set(*gl, locations.textureBottom, 1.0f);
    uniforms::set(*gl, locations.texture, 0);
    gl->glBindVertexArray(context.vertexArray);
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, m_texture.name());
    gl->glDrawArraysInstanced(GL_POINTS, 0, 1, instances);
    vertex_attributes::disable(*gl, 0);
    gl->glBindVertexArray(0);
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
}
