#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <array>
#include <cstddef>
#include <vector>

class QOpenGLShaderProgram;

/// A value of any uniform; a 4 x 4 matrix is the largest.
struct UniformBytes
{
    std::byte* data() { return bytes.data(); }
    const std::byte* data() const { return bytes.data(); }
    alignas(GLfloat) std::array<std::byte, 16 * sizeof(GLfloat)> bytes{};
};

/// Keeps the uniforms of one program as those of another are: of all that both have by the same name and
/// type. Locations are found once, both programs must be linked and stay as they are.
class UniformCopy
{
public:
    /// The programs' context must be current.
    UniformCopy(QOpenGLShaderProgram& from, QOpenGLShaderProgram& to);
    /// Reads the values of the one and sets them in the other, which must be in use.
    void run(OpenGLFunctions& gl, const QOpenGLShaderProgram& from) const;

private:
    struct Pair
    {
        GLenum type;
        GLint from, to; ///< locations
    };
    std::vector<Pair> m_pairs;
};

/// The values that a program's uniforms have at one time.
class UniformValues
{
public:
    /// Reads them; the program must be linked and stay as it is, its context current.
    explicit UniformValues(QOpenGLShaderProgram& program);
    /// Sets them again in the program, which must be in use.
    void set(OpenGLFunctions& gl) const;

private:
    struct Value
    {
        GLenum type;
        GLint location;
        UniformBytes bytes;
    };
    std::vector<Value> m_values;
};
