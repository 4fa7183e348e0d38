#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// An OpenGL buffer that deletes itself; moves, never copies. It has no name until the first upload, so it
/// can be a member before there is a context; it is destroyed while a context of its share group is current
/// (without one the buffer is left to its contexts). All transfers go through GL_ARRAY_BUFFER, which they
/// leave bound: that changes no vertex array.
class VIEWER3DMODULE_EXPORT GlBuffer
{
public:
    GlBuffer() = default;
    GlBuffer(GlBuffer&& other) noexcept;
    GlBuffer& operator=(GlBuffer&& other) noexcept;
    GlBuffer(const GlBuffer&) = delete;
    GlBuffer& operator=(const GlBuffer&) = delete;
    ~GlBuffer();

    /// How many buffers of this kind were deleted on this thread: whoever remembers a name asks, as another
    /// buffer may have it afterwards.
    static std::uint32_t deletions();

    /// The buffer has gone with its contexts, or is left to them.
    void forget() { m_name = 0; }

    /// 0 until the first upload.
    unsigned int name() const { return m_name; }

    /// Replaces the contents. The storage is kept when its size does not change, and else made anew.
    /// @param usage  what OpenGL is told of how often the contents will change
    template <class T>
    void upload(OpenGLFunctions& gl, const std::vector<T>& values, unsigned int usage)
    {
        uploadBytes(gl, values.data(), values.size() * sizeof(T), usage);
    }
    /// Replaces one value; the index must lie within the buffer.
    template <class T>
    void replace(OpenGLFunctions& gl, std::size_t index, const T& value)
    {
        replaceBytes(gl, index * sizeof(T), &value, sizeof(T));
    }

    /// Makes room for so many bytes, whose values are arbitrary; above 0.
    void reserve(OpenGLFunctions& gl, std::size_t size, unsigned int usage);
    /// Replaces bytes by those of another buffer, without bringing them here. Both ranges must lie within.
    void copyFrom(OpenGLFunctions& gl, unsigned int source, std::size_t sourceOffset, std::size_t offset,
                  std::size_t size);

private:
    void uploadBytes(OpenGLFunctions& gl, const void* bytes, std::size_t size, unsigned int usage);
    void replaceBytes(OpenGLFunctions& gl, std::size_t offset, const void* bytes, std::size_t size);

    unsigned int m_name = 0;
    std::size_t m_size = 0;
};
