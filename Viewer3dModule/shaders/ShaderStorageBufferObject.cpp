#include <Viewer3dModule/shaders/ShaderStorageBufferObject.h>

#include <Viewer3dModule/shaders/KnownOfProgram.h>

#include <algorithm>

namespace {

constexpr GLenum target = GL_SHADER_STORAGE_BUFFER;
constexpr std::uint64_t allocating = ~std::uint64_t(0);

// Drivers write zeros at once, and anything else word by word.
const unsigned int* cleared(const unsigned int& value)
{
    return value == 0 ? nullptr : &value;
}

} // namespace

ShaderStorageBufferObject::ShaderStorageBufferObject(unsigned int binding, const std::string& blockName,
                                                     std::uint64_t size)
    : m_binding(binding)
    , m_blockName(blockName)
    , m_size(size)
{
}

ShaderStorageBufferObject::~ShaderStorageBufferObject()
{
    if (m_buffer == 0) return;
    if (OpenGLFunctions* gl = currentGLFunctions()) gl->glDeleteBuffers(1, &m_buffer);
}

bool ShaderStorageBufferObject::init()
{
    if (m_buffer != 0) return m_size != 0;
    if (m_size == allocating) return false;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return false;
    gl->glGenBuffers(1, &m_buffer);
    // Any size differs from the marker, so resize allocates.
    const std::uint64_t wanted = m_size;
    m_size = allocating;
    return resize(wanted) && wanted != 0;
}

bool ShaderStorageBufferObject::resize(std::uint64_t bytes)
{
    if (bytes == m_size) return true;
    if (m_buffer != 0) {
        OpenGLFunctions* gl = currentGLFunctions();
        // The size stays that of the storage: who maps the buffer later relies on it.
        if (!gl) return false;
        gl->glBindBuffer(target, m_buffer);
        gl->glBufferData(target, static_cast<GLsizeiptr>(std::max<std::uint64_t>(bytes, 1)), nullptr,
                         GL_DYNAMIC_COPY);
        gl->glBindBuffer(target, 0);
    }
    m_size = bytes;
    return true;
}

bool ShaderStorageBufferObject::fill(unsigned int value)
{
    OpenGLFunctions* gl = init() ? currentGLFunctions() : nullptr;
    if (!gl) return false;
    gl->glBindBuffer(target, m_buffer);
    gl->glClearBufferData(target, GL_R32UI, GL_RED_INTEGER, GL_UNSIGNED_INT, cleared(value));
    gl->glBindBuffer(target, 0);
    return true;
}

bool ShaderStorageBufferObject::fill(unsigned int value, std::uint64_t offset, std::uint64_t bytes)
{
    OpenGLFunctions* gl = init() ? currentGLFunctions() : nullptr;
    if (!gl) return false;
    gl->glBindBuffer(target, m_buffer);
    gl->glClearBufferSubData(target, GL_R32UI, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(bytes),
                             GL_RED_INTEGER, GL_UNSIGNED_INT, cleared(value));
    gl->glBindBuffer(target, 0);
    return true;
}

void* ShaderStorageBufferObject::map(bool readOnly)
{
    OpenGLFunctions* gl = init() ? currentGLFunctions() : nullptr;
    if (!gl) return nullptr;
    gl->glBindBuffer(target, m_buffer);
    void* memory = gl->glMapBuffer(target, readOnly ? GL_READ_ONLY : GL_WRITE_ONLY);
    if (!memory) gl->glBindBuffer(target, 0);
    return memory;
}

void* ShaderStorageBufferObject::map(bool readOnly, std::uint64_t offset, std::uint64_t bytes)
{
    OpenGLFunctions* gl = init() ? currentGLFunctions() : nullptr;
    if (!gl) return nullptr;
    gl->glBindBuffer(target, m_buffer);
    void* memory = gl->glMapBufferRange(target, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(bytes),
                                        readOnly ? GL_MAP_READ_BIT : GL_MAP_WRITE_BIT);
    if (!memory) gl->glBindBuffer(target, 0);
    return memory;
}

void ShaderStorageBufferObject::unmap() const
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || m_buffer == 0) return;
    gl->glUnmapBuffer(target);
    gl->glBindBuffer(target, 0);
}

bool ShaderStorageBufferObject::bind(QOpenGLShaderProgram& program) const
{
    const QVariant known = program.property(m_blockName.c_str());
    if (known.isValid() && known.toUInt() == m_binding) return bind(0u);
    if (!bind(program.programId())) return false;
    if (staysAsItIs(program)) program.setProperty(m_blockName.c_str(), m_binding);
    return true;
}

bool ShaderStorageBufferObject::bind(unsigned int program) const
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (m_buffer == 0 || !gl) return false;
    if (program != 0) {
        const GLuint block =
            gl->glGetProgramResourceIndex(program, GL_SHADER_STORAGE_BLOCK, m_blockName.c_str());
        if (block == GL_INVALID_INDEX) return false;
        gl->glShaderStorageBlockBinding(program, block, m_binding);
    }
    gl->glBindBufferBase(target, m_binding, m_buffer);
    return true;
}
