#include <Viewer3dModule/drawables/VertexArraySetup.h>

#include <Viewer3dModule/drawables/GlBuffer.h>

namespace {

bool isSame(const VertexArraySetup::Source& a, const VertexArraySetup::Source& b)
{
    return a.buffer == b.buffer && a.components == b.components && a.type == b.type && a.offset == b.offset;
}

} // namespace

void VertexArraySetup::open(OpenGLFunctions& gl, std::uint32_t vertexArray)
{
    if (m_gl == &gl && m_vertexArray == vertexArray) {
        forgetDeleted();
        return;
    }
    close();
    gl.glBindVertexArray(vertexArray);
    m_gl = &gl;
    m_vertexArray = vertexArray;
    m_deletions = GlBuffer::deletions();
}

void VertexArraySetup::close()
{
    if (!m_gl) return;
    disable(m_enabled);
    setIndices(0);
    setFills(true);
    m_gl->glBindVertexArray(0);
    m_gl = nullptr;
}

// The name of a buffer that was deleted may be that of a new one.
void VertexArraySetup::forgetDeleted()
{
    if (m_deletions == GlBuffer::deletions()) return;
    m_deletions = GlBuffer::deletions();
    disable(m_enabled);
    m_gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    m_indices = 0;
}

void VertexArraySetup::keepOnly(std::uint32_t attributes)
{
    disable(m_enabled & ~attributes);
}

void VertexArraySetup::setFills(bool fills)
{
    if (!m_offsetsFills || fills == m_hasFills) return;
    m_hasFills = fills;
    if (fills)
        m_gl->glEnable(GL_POLYGON_OFFSET_FILL);
    else
        m_gl->glDisable(GL_POLYGON_OFFSET_FILL);
}

void VertexArraySetup::disable(std::uint32_t attributes)
{
    for (unsigned int location = 0; attributes >> location != 0; ++location)
        if ((attributes >> location & 1u) != 0) m_gl->glDisableVertexAttribArray(location);
    m_enabled &= ~attributes;
}

void VertexArraySetup::setAttribute(unsigned int location, const Source& source)
{
    const std::uint32_t bit = 1u << location;
    const bool isEnabled = (m_enabled & bit) != 0;
    if (isEnabled && isSame(m_sources[location], source)) return;
    m_gl->glBindBuffer(GL_ARRAY_BUFFER, source.buffer);
    if (!isEnabled) m_gl->glEnableVertexAttribArray(location);
    m_gl->glVertexAttribPointer(location, source.components, source.type,
                                source.type == GL_FLOAT ? GL_FALSE : GL_TRUE, 0,
                                reinterpret_cast<const void*>(source.offset));
    m_enabled |= bit;
    m_sources[location] = source;
}

void VertexArraySetup::setIndices(unsigned int buffer)
{
    if (buffer == m_indices) return;
    m_gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer);
    m_indices = buffer;
}
