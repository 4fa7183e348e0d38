#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <string>
#include <vector>

class QOpenGLShaderProgram;

/// The values of all uniforms of a program, by name: what linking a program again would lose.
class UniformValues
{
public:
    /// Asks the program, which must be linked; its context must be current.
    explicit UniformValues(QOpenGLShaderProgram& program);
    /// Sets those that the program has,. The program is in use afterwards.
    void restore(QOpenGLShaderProgram& program) const;

private:
    struct Value
    {
        std::string name; ///< of an array: of one element
        GLenum type;
        std::vector<char> bytes;
    };
    std::vector<Value> m_values;
};
