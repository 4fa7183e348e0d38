#pragma once

#include <benchmarks/data/GroundMesh.h>
#include <benchmarks/plain/PassUniforms.h>

/// Distances from a camera to a mesh: its depths alone are drawn, read back, and made distances by the
/// projection's two numbers.
class PlainDepth
{
public:
    PlainDepth(PlainContext& context, const GroundMesh& mesh);

    /// Row by row, the lowest first; NaN where there is nothing.
    std::vector<float> distances(const glm::dmat4& view, const glm::dmat4& projection);

private:
    PlainContext& m_context;
    GLsizei m_indexCount;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
    GLuint m_framebuffer = 0;
};
