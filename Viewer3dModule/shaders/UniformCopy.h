#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <vector>

class QOpenGLShaderProgram;

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
