#include <Viewer3dModule/shaders/UniformCopy.h>

#include <QtGui/QOpenGLShaderProgram>

#include <map>
#include <string>

namespace {

using Types = std::map<std::string, GLenum>;

/// The uniforms outside of blocks, those in arrays one by one.
Types activeUniforms(OpenGLFunctions& gl, GLuint program)
{
    Types all;
    GLint count = 0, longest = 0;
    gl.glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    gl.glGetProgramiv(program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest);
    std::vector<char> buffer(static_cast<std::size_t>(longest) + 1);
    for (GLint i = 0; i < count; ++i) {
        GLint size = 0;
        GLenum type = 0;
        gl.glGetActiveUniform(program, static_cast<GLuint>(i), longest, nullptr, &size, &type, buffer.data());
        const std::string name = buffer.data();
        if (gl.glGetUniformLocation(program, name.c_str()) < 0) continue;
        all.emplace(name, type);
        const std::size_t bracket = name.rfind("[0]");
        if (bracket == std::string::npos || bracket + 3 != name.size()) continue;
        for (GLint k = 1; k < size; ++k)
            all.emplace(name.substr(0, bracket) + '[' + std::to_string(k) + ']', type);
    }
    return all;
}

/// How uniforms of one type are set; the kind is that of the function that reads them.
struct Setter
{
    enum Kind { Float, Int, Uint } kind;
    void (*set)(OpenGLFunctions& gl, GLint location, const void* value);
};

template <typename T>
const T* as(const void* value)
{
    return static_cast<const T*>(value);
}

#define V3D_VECTOR(kind, type, function)                                                                     \
    Setter                                                                                                   \
    {                                                                                                        \
        Setter::kind,                                                                                        \
            [](OpenGLFunctions& gl, GLint at, const void* value) { gl.function(at, 1, as<type>(value)); }    \
    }
#define V3D_MATRIX(function)                                                                                 \
    Setter                                                                                                   \
    {                                                                                                        \
        Setter::Float, [](OpenGLFunctions& gl, GLint at, const void* value) {                                \
            gl.function(at, 1, GL_FALSE, as<GLfloat>(value));                                                \
        }                                                                                                    \
    }

/// Booleans and samplers are set as integers.
Setter setterOf(GLenum type)
{
    switch (type) {
    case GL_FLOAT:
        return V3D_VECTOR(Float, GLfloat, glUniform1fv);
    case GL_FLOAT_VEC2:
        return V3D_VECTOR(Float, GLfloat, glUniform2fv);
    case GL_FLOAT_VEC3:
        return V3D_VECTOR(Float, GLfloat, glUniform3fv);
    case GL_FLOAT_VEC4:
        return V3D_VECTOR(Float, GLfloat, glUniform4fv);
    case GL_FLOAT_MAT2:
        return V3D_MATRIX(glUniformMatrix2fv);
    case GL_FLOAT_MAT3:
        return V3D_MATRIX(glUniformMatrix3fv);
    case GL_FLOAT_MAT4:
        return V3D_MATRIX(glUniformMatrix4fv);
    case GL_INT_VEC2:
    case GL_BOOL_VEC2:
        return V3D_VECTOR(Int, GLint, glUniform2iv);
    case GL_INT_VEC3:
    case GL_BOOL_VEC3:
        return V3D_VECTOR(Int, GLint, glUniform3iv);
    case GL_INT_VEC4:
    case GL_BOOL_VEC4:
        return V3D_VECTOR(Int, GLint, glUniform4iv);
    case GL_UNSIGNED_INT:
        return V3D_VECTOR(Uint, GLuint, glUniform1uiv);
    case GL_UNSIGNED_INT_VEC2:
        return V3D_VECTOR(Uint, GLuint, glUniform2uiv);
    case GL_UNSIGNED_INT_VEC3:
        return V3D_VECTOR(Uint, GLuint, glUniform3uiv);
    case GL_UNSIGNED_INT_VEC4:
        return V3D_VECTOR(Uint, GLuint, glUniform4uiv);
    default:
        return V3D_VECTOR(Int, GLint, glUniform1iv);
    }
}

#undef V3D_VECTOR
#undef V3D_MATRIX

void read(OpenGLFunctions& gl, GLuint program, GLint location, Setter::Kind kind, void* bytes)
{
    switch (kind) {
    case Setter::Float:
        gl.glGetUniformfv(program, location, static_cast<GLfloat*>(bytes));
        break;
    case Setter::Int:
        gl.glGetUniformiv(program, location, static_cast<GLint*>(bytes));
        break;
    case Setter::Uint:
        gl.glGetUniformuiv(program, location, static_cast<GLuint*>(bytes));
        break;
    }
}

} // namespace

UniformCopy::UniformCopy(QOpenGLShaderProgram& from, QOpenGLShaderProgram& to)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    const Types theirs = activeUniforms(*gl, to.programId());
    for (const auto& [name, type] : activeUniforms(*gl, from.programId())) {
        const auto same = theirs.find(name);
        if (same == theirs.end() || same->second != type) continue;
        Pair pair;
        pair.type = type;
        pair.from = gl->glGetUniformLocation(from.programId(), name.c_str());
        pair.to = gl->glGetUniformLocation(to.programId(), name.c_str());
        m_pairs.push_back(pair);
    }
}

void UniformCopy::run(OpenGLFunctions& gl, const QOpenGLShaderProgram& from) const
{
    const GLuint program = from.programId();
    UniformBytes value;
    for (const Pair& pair : m_pairs) {
        const Setter setter = setterOf(pair.type);
        read(gl, program, pair.from, setter.kind, value.data());
        setter.set(gl, pair.to, value.data());
    }
}

UniformValues::UniformValues(QOpenGLShaderProgram& program)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    for (const auto& [name, type] : activeUniforms(*gl, program.programId())) {
        Value value;
        value.type = type;
        value.location = gl->glGetUniformLocation(program.programId(), name.c_str());
        read(*gl, program.programId(), value.location, setterOf(type).kind, value.bytes.data());
        m_values.push_back(value);
    }
}

void UniformValues::set(OpenGLFunctions& gl) const
{
    for (const Value& value : m_values)
        setterOf(value.type).set(gl, value.location, value.bytes.data());
}
