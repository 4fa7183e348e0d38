#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/drawables/VertexArraySetup.h>

#include <cstdint>

class GlBuffer;
struct PaintContext;

/// Locations of the vertex stages' inputs, the same in every program.
struct VertexAttribute
{
    static constexpr unsigned int Coords = 0;    ///< vec3
    static constexpr unsigned int Color = 1;     ///< vec4
    static constexpr unsigned int Normal = 2;    ///< vec3
    static constexpr unsigned int TexCoords = 3; ///< vec2
};

/// Binds a pass's vertex array for some draw calls of one primitive. At the end the vertex array is as it was
/// before (no attribute enabled, no index buffer) and none is bound; or, where the pass keeps what its items
/// bind (see ItemPass), it is left for the next primitive.
class VIEWER3DMODULE_EXPORT VertexArrayBinding
{
public:
    /// @param vertexArray  PaintContext::vertexArray, of the context that is current
    VertexArrayBinding(OpenGLFunctions& gl, std::uint32_t vertexArray);
    /// That of the pass.
    VertexArrayBinding(OpenGLFunctions& gl, const PaintContext& context);
    ~VertexArrayBinding();
    VertexArrayBinding(const VertexArrayBinding&) = delete;
    VertexArrayBinding& operator=(const VertexArrayBinding&) = delete;

    /// The function table that the binding was made with.
    OpenGLFunctions& gl() const { return m_gl; }
    /// Feeds the attribute from packed floats, components a vertex; the first vertex is at the offset, bytes.
    void setFloats(unsigned int location, int components, const GlBuffer& buffer);
    void setFloats(unsigned int location, int components, unsigned int buffer, std::size_t offset);
    /// Feeds the attribute from four bytes a vertex, 0 to 255 for 0 to 1.
    void setColors(unsigned int location, const GlBuffer& buffer);
    void setColors(unsigned int location, unsigned int buffer, std::size_t offset);
    /// Draw calls with indices take them from here.
    void setIndices(const GlBuffer& buffer);
    void setIndices(unsigned int buffer) { m_setup.setIndices(buffer); }
    /// To be called when all that the draw calls read is set, and before the first of them: what other
    /// primitives have left is switched off.
    /// @param hasFills  whether the draw calls have any, by themselves: the program may make some of lines
    void ready(bool hasFills = true)
    {
        m_setup.keepOnly(m_used);
        m_setup.setFills(hasFills);
    }

private:
    OpenGLFunctions& m_gl;
    VertexArraySetup m_own;
    VertexArraySetup& m_setup;
    std::uint32_t m_used = 0; // a bit a location
};
