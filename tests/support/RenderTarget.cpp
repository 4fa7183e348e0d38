#include "RenderTarget.h"

#include <algorithm>

RenderTarget::RenderTarget(OpenGLFunctions& gl, const QSize& size, int colorCount)
    : m_gl(gl)
    , m_size(size)
{
    m_textures.resize(static_cast<std::size_t>(colorCount) + 1);
    gl.glGenTextures(colorCount + 1, m_textures.data());
    gl.glGenFramebuffers(1, &m_framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    for (int i = 0; i <= colorCount; ++i) {
        const bool isDepth = i == colorCount;
        gl.glBindTexture(GL_TEXTURE_2D, m_textures[static_cast<std::size_t>(i)]);
        gl.glTexStorage2D(GL_TEXTURE_2D, 1, isDepth ? GL_DEPTH_COMPONENT32F : GL_RGBA8, size.width(),
                          size.height());
        const GLenum attachment =
            isDepth ? GL_DEPTH_ATTACHMENT : GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(i);
        gl.glFramebufferTexture2D(GL_FRAMEBUFFER, attachment, GL_TEXTURE_2D,
                                  m_textures[static_cast<std::size_t>(i)], 0);
    }
    gl.glBindTexture(GL_TEXTURE_2D, 0);
}

RenderTarget::~RenderTarget()
{
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    m_gl.glDeleteFramebuffers(1, &m_framebuffer);
    m_gl.glDeleteTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
}

void RenderTarget::bind()
{
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    std::vector<GLenum> buffers;
    for (std::size_t i = 0; i + 1 < m_textures.size(); ++i)
        buffers.push_back(GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(i));
    m_gl.glDrawBuffers(static_cast<GLsizei>(buffers.size()), buffers.data());
    m_gl.glViewport(0, 0, m_size.width(), m_size.height());
}

void RenderTarget::clear(const QColor& color)
{
    const float first[4] = {static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
                            static_cast<float>(color.blueF()), static_cast<float>(color.alphaF())};
    const float zero[4] = {0, 0, 0, 0};
    const float one = 1.0f;
    for (std::size_t i = 0; i + 1 < m_textures.size(); ++i)
        m_gl.glClearBufferfv(GL_COLOR, static_cast<GLint>(i), i == 0 ? first : zero);
    m_gl.glClearBufferfv(GL_DEPTH, 0, &one);
}

QImage RenderTarget::image(int attachment)
{
    QImage image(m_size, QImage::Format_RGBA8888);
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    m_gl.glReadBuffer(GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(attachment));
    m_gl.glReadPixels(0, 0, m_size.width(), m_size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    return image.mirrored();
}

std::vector<float> RenderTarget::depth()
{
    const auto width = static_cast<std::size_t>(m_size.width());
    const auto height = static_cast<std::size_t>(m_size.height());
    std::vector<float> values(width * height);
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    m_gl.glReadPixels(0, 0, m_size.width(), m_size.height(), GL_DEPTH_COMPONENT, GL_FLOAT, values.data());
    for (std::size_t row = 0; row < height / 2; ++row)
        std::swap_ranges(values.begin() + static_cast<std::ptrdiff_t>(row * width),
                         values.begin() + static_cast<std::ptrdiff_t>((row + 1) * width),
                         values.begin() + static_cast<std::ptrdiff_t>((height - 1 - row) * width));
    return values;
}
