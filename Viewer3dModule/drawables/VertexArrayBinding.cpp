#include <Viewer3dModule/drawables/VertexArrayBinding.h>

#include <Viewer3dModule/drawables/GlBuffer.h>

VertexArrayBinding::VertexArrayBinding(OpenGLFunctions& gl, std::uint32_t vertexArray)
    : m_gl(gl)
{
    m_gl.glBindVertexArray(vertexArray);
}

VertexArrayBinding::~VertexArrayBinding()
{
    for (unsigned int location = 0; m_enabled >> location != 0; ++location)
        if ((m_enabled >> location & 1u) != 0) m_gl.glDisableVertexAttribArray(location);
    if (m_hasIndices) m_gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    m_gl.glBindVertexArray(0);
}

void VertexArrayBinding::setFloats(unsigned int location, int components, const GlBuffer& buffer)
{
    setPointer(location, components, GL_FLOAT, false, buffer);
}

void VertexArrayBinding::setColors(unsigned int location, const GlBuffer& buffer)
{
    setPointer(location, 4, GL_UNSIGNED_BYTE, true, buffer);
}

void VertexArrayBinding::setPointer(unsigned int location, int components, unsigned int type, bool normalized,
                                    const GlBuffer& buffer)
{
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, buffer.name());
    m_gl.glEnableVertexAttribArray(location);
    m_gl.glVertexAttribPointer(location, components, type, normalized ? GL_TRUE : GL_FALSE, 0, nullptr);
    m_enabled |= 1u << location;
}

void VertexArrayBinding::setIndices(const GlBuffer& buffer)
{
    m_gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer.name());
    m_hasIndices = true;
}
