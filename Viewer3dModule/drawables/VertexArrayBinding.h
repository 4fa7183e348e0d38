#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <cstdint>

class GlBuffer;

/// Locations of the vertex stages' inputs, the same in every program.
struct VertexAttribute
{
    static constexpr unsigned int Coords = 0;    ///< vec3
    static constexpr unsigned int Color = 1;     ///< vec4
    static constexpr unsigned int Normal = 2;    ///< vec3
    static constexpr unsigned int TexCoords = 3; ///< vec2
};

/// Binds a pass's vertex array for some draw calls of one primitive. At the end the vertex array is as it was
/// before (no attribute enabled, no index buffer) and none is bound.
class VIEWER3DMODULE_EXPORT VertexArrayBinding
{
public:
    /// @param vertexArray  PaintContext::vertexArray, of the context that is current
    VertexArrayBinding(OpenGLFunctions& gl, std::uint32_t vertexArray);
    ~VertexArrayBinding();
    VertexArrayBinding(const VertexArrayBinding&) = delete;
    VertexArrayBinding& operator=(const VertexArrayBinding&) = delete;

    /// The function table that the binding was made with.
    OpenGLFunctions& gl() const { return m_gl; }
    /// Feeds the attribute from packed floats, components a vertex.
    void setFloats(unsigned int location, int components, const GlBuffer& buffer);
    /// Feeds the attribute from four bytes a vertex, 0 to 255 for 0 to 1.
    void setColors(unsigned int location, const GlBuffer& buffer);
    /// Draw calls with indices take them from here.
    void setIndices(const GlBuffer& buffer);

private:
    void setPointer(unsigned int location, int components, unsigned int type, bool normalized,
                    const GlBuffer& buffer);

    OpenGLFunctions& m_gl;
    std::uint32_t m_enabled = 0; // a bit a location
    bool m_hasIndices = false;
};
