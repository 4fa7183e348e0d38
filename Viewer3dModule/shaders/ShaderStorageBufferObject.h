#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <cstdint>
#include <string>

class QOpenGLShaderProgram;

/// A shader storage buffer, the binding point that it is bound to and the name of the block that it feeds.
///
/// The OpenGL buffer is made at the first init, fill or map, in the context that is current then; the object
/// itself can be made before there is any. Without a current context of the share group every operation does
/// nothing and says so by its result; nothing is logged. Sizes and offsets are in bytes.
///
/// Copies are shallow: they name the same OpenGL buffer, and each deletes it when it is destroyed. Whoever
/// copies one keeps exactly one live owner.
class VIEWER3DMODULE_EXPORT ShaderStorageBufferObject
{
public:
    /// Makes no OpenGL call.
    /// @param binding    index of the storage binding point
    /// @param blockName  as the shaders' sources write it
    ShaderStorageBufferObject(unsigned int binding, const std::string& blockName, std::uint64_t size);
    ShaderStorageBufferObject(const ShaderStorageBufferObject&) = default;
    ShaderStorageBufferObject& operator=(const ShaderStorageBufferObject&) = default;
    /// Deletes the buffer; without a current context it is left to its own contexts.
    ~ShaderStorageBufferObject();

    /// Makes the buffer if there is none; its contents are undefined. False for a size of 0: the buffer then
    /// has one byte, and nothing to show.
    bool init();
    /// Changes the size; the contents are undefined afterwards, unless it is the size already. Before init it
    /// is only noted. False, and the size stays, when there is a buffer but no context.
    bool resize(std::uint64_t bytes);
    /// Fills the whole buffer with copies of the value.
    bool fill(unsigned int value);
    /// Fills a part of it; offset and count of bytes are multiples of 4 within the size.
    bool fill(unsigned int value, std::uint64_t offset, std::uint64_t bytes);

    /// The buffer's memory, for reading or for writing, not both; null when that fails. What shaders wrote is
    /// seen after glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT). The buffer stays bound until unmap.
    void* map(bool readOnly);
    /// The same of a part, which must lie within the size and not be empty.
    void* map(bool readOnly, std::uint64_t offset, std::uint64_t bytes);
    void unmap() const;

    /// Binds the buffer to its point, and the program's block to that point; program 0: for programs that
    /// declare the point themselves. False, and nothing is bound, before init and for a program that lacks
    /// the block.
    bool bind(unsigned int program) const;
    /// The same; of a program that buildShaderProgram or a variant made the driver is asked for the block
    /// once.
    bool bind(QOpenGLShaderProgram& program) const;

    const std::string& getBlockName() const { return m_blockName; }
    /// The OpenGL name; 0 before init.
    unsigned int getSSBO() const { return m_buffer; }
    /// 0 before init.
    std::uint64_t size() const { return m_buffer == 0 ? 0 : m_size; }

private:
    unsigned int m_buffer = 0;
    unsigned int m_binding;
    std::string m_blockName;
    std::uint64_t m_size; // what was asked for; all ones only while init runs
};
