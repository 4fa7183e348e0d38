#include <Viewer3dModule/drawables/GlBuffer.h>

#include <utility>

namespace {

std::uint32_t& deletionCount()
{
    static thread_local std::uint32_t count = 0;
    return count;
}

} // namespace

std::uint32_t GlBuffer::deletions()
{
    return deletionCount();
}

GlBuffer::GlBuffer(GlBuffer&& other) noexcept
    : m_name(std::exchange(other.m_name, 0))
    , m_size(std::exchange(other.m_size, 0))
{
}

GlBuffer& GlBuffer::operator=(GlBuffer&& other) noexcept
{
    std::swap(m_name, other.m_name);
    std::swap(m_size, other.m_size);
    return *this;
}

GlBuffer::~GlBuffer()
{
    if (m_name == 0) return;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    gl->glDeleteBuffers(1, &m_name);
    ++deletionCount();
}

void GlBuffer::uploadBytes(OpenGLFunctions& gl, const void* bytes, std::size_t size, unsigned int usage)
{
    if (m_name == 0) gl.glGenBuffers(1, &m_name);
    gl.glBindBuffer(GL_ARRAY_BUFFER, m_name);
    if (size == m_size)
        gl.glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(size), bytes);
    else
        gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(size), bytes, usage);
    m_size = size;
}

void GlBuffer::reserve(OpenGLFunctions& gl, std::size_t size, unsigned int usage)
{
    if (m_name == 0) gl.glGenBuffers(1, &m_name);
    gl.glBindBuffer(GL_ARRAY_BUFFER, m_name);
    gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(size), nullptr, usage);
    m_size = size;
}

void GlBuffer::copyFrom(OpenGLFunctions& gl, unsigned int source, std::size_t sourceOffset,
                        std::size_t offset, std::size_t size)
{
    gl.glBindBuffer(GL_COPY_READ_BUFFER, source);
    gl.glBindBuffer(GL_ARRAY_BUFFER, m_name);
    gl.glCopyBufferSubData(GL_COPY_READ_BUFFER, GL_ARRAY_BUFFER, static_cast<GLintptr>(sourceOffset),
                           static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(size));
}

void GlBuffer::replaceBytes(OpenGLFunctions& gl, std::size_t offset, const void* bytes, std::size_t size)
{
    gl.glBindBuffer(GL_ARRAY_BUFFER, m_name);
    gl.glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(size), bytes);
}
