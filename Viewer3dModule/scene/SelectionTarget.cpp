#include <Viewer3dModule/scene/SelectionTarget.h>

namespace {

void set(OpenGLFunctions& gl, GLenum capability, bool on)
{
    if (on)
        gl.glEnable(capability);
    else
        gl.glDisable(capability);
}

} // namespace

EmptyFrameBuffer::~EmptyFrameBuffer()
{
    OpenGLFunctions* gl = m_name != 0 ? currentGLFunctions() : nullptr;
    if (gl) gl->glDeleteFramebuffers(1, &m_name);
}

void EmptyFrameBuffer::bind(OpenGLFunctions& gl, const QSize& size)
{
    const bool isNew = m_name == 0;
    if (isNew) gl.glGenFramebuffers(1, &m_name);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_name);
    if (isNew) {
        gl.glDrawBuffer(GL_NONE);
        gl.glReadBuffer(GL_NONE);
    }
    if (size == m_size) return;
    gl.glFramebufferParameteri(GL_FRAMEBUFFER, GL_FRAMEBUFFER_DEFAULT_WIDTH, size.width());
    gl.glFramebufferParameteri(GL_FRAMEBUFFER, GL_FRAMEBUFFER_DEFAULT_HEIGHT, size.height());
    m_size = size;
}

SelectionTarget::SelectionTarget(OpenGLFunctions& gl, EmptyFrameBuffer& frameBuffer, const QSize& size,
                                 const QRect& pixels)
    : m_gl(gl)
    , m_size(size)
{
    savePlace();
    frameBuffer.bind(gl, size);
    begin(pixels);
}

SelectionTarget::SelectionTarget(OpenGLFunctions& gl, const QSize& size, const QRect& pixels)
    : m_gl(gl)
    , m_size(size)
{
    savePlace();
    saveOperations();
    gl.glGenFramebuffers(1, &m_frameBuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_frameBuffer);
    makeIds(size);
    begin(pixels);
    if (!m_isComplete) return;
    // Bytes of identifiers are no colours to mix or to spread.
    gl.glDisable(GL_BLEND);
    gl.glDisable(GL_DITHER);
    gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl.glEnable(GL_DEPTH_TEST);
    gl.glDepthMask(GL_TRUE);
    gl.glDepthFunc(GL_LEQUAL);
    const GLfloat nothing[4] = {0.0f, 0.0f, 0.0f, 0.0f}, farthest = 1.0f;
    gl.glClearBufferfv(GL_COLOR, 1, nothing);
    gl.glClearBufferfv(GL_COLOR, 2, nothing);
    gl.glClearBufferfv(GL_DEPTH, 0, &farthest);
}

void SelectionTarget::begin(const QRect& pixels)
{
    m_isComplete = m_gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (!m_isComplete) return;
    m_gl.glViewport(0, 0, m_size.width(), m_size.height());
    limitTo(pixels);
}

SelectionTarget::~SelectionTarget()
{
    restorePlace();
    if (m_frameBuffer == 0) return;
    restoreOperations();
    m_gl.glDeleteFramebuffers(1, &m_frameBuffer);
    m_gl.glDeleteRenderbuffers(3, m_storage);
}

// The programs put the two words of an identifier out at locations 1 and 2.
void SelectionTarget::makeIds(const QSize& size)
{
    m_gl.glGenRenderbuffers(3, m_storage);
    const GLenum formats[] = {GL_RGBA8, GL_RGBA8, GL_DEPTH_COMPONENT32F};
    const GLenum places[] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_DEPTH_ATTACHMENT};
    for (int i = 0; i < 3; ++i) {
        m_gl.glBindRenderbuffer(GL_RENDERBUFFER, m_storage[i]);
        m_gl.glRenderbufferStorage(GL_RENDERBUFFER, formats[i], size.width(), size.height());
        m_gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, places[i], GL_RENDERBUFFER, m_storage[i]);
    }
    m_gl.glBindRenderbuffer(GL_RENDERBUFFER, 0);
    const GLenum outputs[] = {GL_NONE, GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_NONE};
    m_gl.glDrawBuffers(4, outputs);
}

void SelectionTarget::limitTo(const QRect& pixels)
{
    m_gl.glEnable(GL_SCISSOR_TEST);
    m_gl.glScissor(pixels.x(), m_size.height() - pixels.y() - pixels.height(), pixels.width(),
                   pixels.height());
}

std::vector<std::uint64_t> SelectionTarget::ids(const QRect& pixels)
{
    const auto width = static_cast<std::size_t>(pixels.width());
    const auto height = static_cast<std::size_t>(pixels.height());
    std::vector<std::uint32_t> words[2];
    for (int i = 0; i < 2; ++i) {
        words[i].resize(width * height);
        m_gl.glReadBuffer(i == 0 ? GL_COLOR_ATTACHMENT0 : GL_COLOR_ATTACHMENT1);
        m_gl.glReadPixels(pixels.x(), m_size.height() - pixels.y() - pixels.height(), pixels.width(),
                          pixels.height(), GL_RGBA, GL_UNSIGNED_BYTE, words[i].data());
    }
    // OpenGL gives the bottom row first.
    std::vector<std::uint64_t> ids(width * height);
    for (std::size_t row = 0; row < height; ++row)
        for (std::size_t x = 0; x < width; ++x) {
            const std::size_t from = (height - 1 - row) * width + x;
            ids[row * width + x] = words[0][from] | std::uint64_t(words[1][from]) << 32;
        }
    return ids;
}

void SelectionTarget::savePlace()
{
    m_gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_before.drawTarget);
    m_gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_before.readTarget);
    m_gl.glGetIntegerv(GL_VIEWPORT, m_before.viewport);
    m_gl.glGetIntegerv(GL_SCISSOR_BOX, m_before.scissor);
    m_before.scissorTest = m_gl.glIsEnabled(GL_SCISSOR_TEST);
}

void SelectionTarget::saveOperations()
{
    m_before.blend = m_gl.glIsEnabled(GL_BLEND);
    m_before.dither = m_gl.glIsEnabled(GL_DITHER);
    m_before.depthTest = m_gl.glIsEnabled(GL_DEPTH_TEST);
    m_gl.glGetBooleanv(GL_DEPTH_WRITEMASK, &m_before.depthMask);
    m_gl.glGetBooleanv(GL_COLOR_WRITEMASK, m_before.colorMask);
    m_gl.glGetIntegerv(GL_DEPTH_FUNC, &m_before.depthFunction);
}

void SelectionTarget::restorePlace()
{
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_before.drawTarget));
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_before.readTarget));
    m_gl.glViewport(m_before.viewport[0], m_before.viewport[1], m_before.viewport[2], m_before.viewport[3]);
    m_gl.glScissor(m_before.scissor[0], m_before.scissor[1], m_before.scissor[2], m_before.scissor[3]);
    set(m_gl, GL_SCISSOR_TEST, m_before.scissorTest != GL_FALSE);
}

void SelectionTarget::restoreOperations()
{
    set(m_gl, GL_BLEND, m_before.blend != GL_FALSE);
    set(m_gl, GL_DITHER, m_before.dither != GL_FALSE);
    set(m_gl, GL_DEPTH_TEST, m_before.depthTest != GL_FALSE);
    m_gl.glDepthMask(m_before.depthMask);
    m_gl.glColorMask(m_before.colorMask[0], m_before.colorMask[1], m_before.colorMask[2],
                     m_before.colorMask[3]);
    m_gl.glDepthFunc(static_cast<GLenum>(m_before.depthFunction));
}
