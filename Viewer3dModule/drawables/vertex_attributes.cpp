#include <Viewer3dModule/drawables/vertex_attributes.h>

#include <Viewer3dModule/drawables/GlBuffer.h>

namespace {

const void* pointer(std::size_t offset)
{
    return reinterpret_cast<const void*>(offset);
}

void enable(OpenGLFunctions& gl, unsigned int location, const vertex_attributes::Layout& layout)
{
    gl.glEnableVertexAttribArray(location);
    gl.glVertexAttribDivisor(location, layout.divisor);
}

} // namespace

void vertex_attributes::setFloats(OpenGLFunctions& gl, unsigned int location, const GlBuffer& buffer,
                                  const Layout& layout)
{
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer.name());
    gl.glVertexAttribPointer(location, layout.components, GL_FLOAT, GL_FALSE, layout.stride,
                             pointer(layout.offset));
    enable(gl, location, layout);
}

void vertex_attributes::setIntegers(OpenGLFunctions& gl, unsigned int location, const GlBuffer& buffer,
                                    const Layout& layout)
{
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer.name());
    gl.glVertexAttribIPointer(location, layout.components, GL_INT, layout.stride, pointer(layout.offset));
    enable(gl, location, layout);
}

void vertex_attributes::setUnsignedIntegers(OpenGLFunctions& gl, unsigned int location,
                                            const GlBuffer& buffer, const Layout& layout)
{
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer.name());
    gl.glVertexAttribIPointer(location, layout.components, GL_UNSIGNED_INT, layout.stride,
                              pointer(layout.offset));
    enable(gl, location, layout);
}

void vertex_attributes::disable(OpenGLFunctions& gl, unsigned int location)
{
    gl.glDisableVertexAttribArray(location);
    gl.glVertexAttribDivisor(location, 0);
}
