#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <cstddef>

class GlBuffer;

/// Feeding vertex attributes from buffers, for who keeps the bound vertex array between calls. Primitives
/// that bind and draw in one go use VertexArrayBinding instead. A context and its vertex array must be
/// current.
namespace vertex_attributes {

/// Where an attribute's values lie in a buffer.
struct Layout
{
    int components = 1;
    int stride = 0;           ///< bytes from one value to the next; 0: packed
    std::size_t offset = 0;   ///< bytes to the first value
    unsigned int divisor = 0; ///< 0: a value a vertex; n: a value every n instances
};

/// 32-bit floats.
VIEWER3DMODULE_EXPORT void setFloats(OpenGLFunctions& gl, unsigned int location, const GlBuffer& buffer,
                                     const Layout& layout);
/// 32-bit integers, read as integers by the shader.
VIEWER3DMODULE_EXPORT void setIntegers(OpenGLFunctions& gl, unsigned int location, const GlBuffer& buffer,
                                       const Layout& layout);
/// 32-bit unsigned integers, read as such by the shader.
VIEWER3DMODULE_EXPORT void setUnsignedIntegers(OpenGLFunctions& gl, unsigned int location,
                                               const GlBuffer& buffer, const Layout& layout);
/// The attribute takes nothing from buffers any more and advances a vertex at a time again.
VIEWER3DMODULE_EXPORT void disable(OpenGLFunctions& gl, unsigned int location);

} // namespace vertex_attributes
