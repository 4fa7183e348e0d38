#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <array>
#include <cstddef>
#include <cstdint>

class GlBuffer;

/// What the attributes of a bound vertex array read from. As long as it stays open the vertex array stays
/// bound, and what is asked for twice in a row is set up once; nobody else may bind a vertex array meanwhile.
class VIEWER3DMODULE_EXPORT VertexArraySetup
{
public:
    /// Where an attribute's values lie: packed, from the offset (bytes) on.
    struct Source
    {
        unsigned int buffer = 0;
        int components = 0;
        unsigned int type = 0; ///< GL_FLOAT, or GL_UNSIGNED_BYTE for 0 to 255 as 0 to 1
        std::size_t offset = 0;
    };

    VertexArraySetup() = default;
    VertexArraySetup(const VertexArraySetup&) = delete;
    VertexArraySetup& operator=(const VertexArraySetup&) = delete;

    /// Binds the vertex array, of the context that is current, unless it is open already.
    void open(OpenGLFunctions& gl, std::uint32_t vertexArray);
    /// Puts the vertex array back as it was (no attribute enabled, no index buffer) and binds none.
    void close();

    /// Disables the attributes that are not among these, a bit a location.
    void keepOnly(std::uint32_t attributes);
    void setAttribute(unsigned int location, const Source& source);
    void setIndices(unsigned int buffer);
    /// Polygon offset is on for fills, and setFills may switch it off until close.
    void setOffsetsFills(bool offsets) { m_offsetsFills = offsets; }
    /// Says whether what is drawn next has fills. Drivers make simpler code for lines and points without
    /// polygon offset, which these do not have anyway.
    void setFills(bool fills);

private:
    static constexpr std::size_t LocationCount = 4;
    void disable(std::uint32_t attributes);
    void forgetDeleted();

    OpenGLFunctions* m_gl = nullptr; // while open
    std::uint32_t m_vertexArray = 0;
    std::uint32_t m_enabled = 0; // a bit a location
    std::array<Source, LocationCount> m_sources;
    unsigned int m_indices = 0;
    bool m_offsetsFills = false;
    bool m_hasFills = true;        ///< false: polygon offset is off meanwhile
    std::uint32_t m_deletions = 0; // of buffers, when the sources were set
};
