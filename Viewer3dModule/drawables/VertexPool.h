#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <array>
#include <cstddef>
#include <cstdint>

/// Vertices, or indices, of many primitives as slices of few buffers: a buffer of its own costs a primitive
/// some kilobytes and the driver a set-up for each draw call. The buffers belong to the contexts' share
/// group; further ones are made as slices are taken, what is given back is used again, and a buffer without
/// slices is deleted, or, where no context of the group is current then, kept for the next ones.
namespace vertex_pool {

/// Bytes a vertex in each of the streams of a pool, of which one vertex has one place in all; 0: no such
/// stream.
using Layout = std::array<std::uint8_t, 4>;

struct Page;

/// A stretch of one page, given back at the end. Moves, never copies. Empty at first.
class VIEWER3DMODULE_EXPORT Slice
{
public:
    Slice() = default;
    /// So many vertices in the current context's pool of this layout, whose values are arbitrary.
    Slice(OpenGLFunctions& gl, const Layout& layout, std::size_t count);
    Slice(Slice&& other) noexcept;
    Slice& operator=(Slice&& other) noexcept;
    Slice(const Slice&) = delete;
    Slice& operator=(const Slice&) = delete;
    ~Slice();

    /// In vertices; of the page and of the slice.
    std::uint32_t first() const { return m_first; }
    std::uint32_t count() const { return m_count; }
    /// The name of a stream's buffer, which begins with the page's first vertex; 0 for an empty slice.
    unsigned int buffer(std::size_t stream) const;

    /// Replaces vertices from this one of the slice on. Leaves the buffer bound to GL_ARRAY_BUFFER, as
    /// reading does.
    void write(OpenGLFunctions& gl, std::size_t stream, std::size_t from, const void* values,
               std::size_t vertices) const;
    void read(OpenGLFunctions& gl, std::size_t stream, std::size_t from, void* values,
              std::size_t vertices) const;

private:
    Page* m_page = nullptr;
    std::uint32_t m_first = 0;
    std::uint32_t m_count = 0;
};

/// How many buffers the pools of the current context's share group have.
VIEWER3DMODULE_EXPORT std::size_t bufferCount();

} // namespace vertex_pool
