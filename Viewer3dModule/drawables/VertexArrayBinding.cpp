#include <Viewer3dModule/drawables/VertexArrayBinding.h>

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/ItemPass.h>
#include <Viewer3dModule/drawers/PaintContext.h>

namespace {

VertexArraySetup& setupOf(const PaintContext& context, VertexArraySetup& own)
{
    ItemPass* pass = ItemPass::of(context);
    return pass ? pass->vertexArray() : own;
}

} // namespace

VertexArrayBinding::VertexArrayBinding(OpenGLFunctions& gl, std::uint32_t vertexArray)
    : m_gl(gl)
    , m_setup(m_own)
{
    m_setup.open(gl, vertexArray);
}

VertexArrayBinding::VertexArrayBinding(OpenGLFunctions& gl, const PaintContext& context)
    : m_gl(gl)
    , m_setup(setupOf(context, m_own))
{
    m_setup.open(gl, context.vertexArray);
}

VertexArrayBinding::~VertexArrayBinding()
{
    m_own.close();
}

void VertexArrayBinding::setFloats(unsigned int location, int components, const GlBuffer& buffer)
{
    setFloats(location, components, buffer.name(), 0);
}

void VertexArrayBinding::setFloats(unsigned int location, int components, unsigned int buffer,
                                   std::size_t offset)
{
    m_setup.setAttribute(location, {buffer, components, GL_FLOAT, offset});
    m_used |= 1u << location;
}

void VertexArrayBinding::setColors(unsigned int location, const GlBuffer& buffer)
{
    setColors(location, buffer.name(), 0);
}

void VertexArrayBinding::setColors(unsigned int location, unsigned int buffer, std::size_t offset)
{
    m_setup.setAttribute(location, {buffer, 4, GL_UNSIGNED_BYTE, offset});
    m_used |= 1u << location;
}

void VertexArrayBinding::setIndices(const GlBuffer& buffer)
{
    setIndices(buffer.name());
}
