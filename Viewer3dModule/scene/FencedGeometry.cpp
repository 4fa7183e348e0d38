#include <Viewer3dModule/scene/FencedGeometry.h>

#include <Viewer3dModule/fences/Fence3DObject.h>

#include <algorithm>
#include <vector>

namespace {

using Vertices = std::vector<glm::vec4>;

Vertices read(OpenGLFunctions& gl)
{
    GLint64 bytes = 0;
    gl.glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &bytes);
    Vertices vertices(static_cast<std::size_t>(bytes) / sizeof(glm::vec4));
    gl.glGetBufferSubData(GL_COPY_READ_BUFFER, 0,
                          static_cast<GLsizeiptr>(vertices.size() * sizeof(glm::vec4)), vertices.data());
    return vertices;
}

/// Moves the primitives that reach the fence to the front; returns how many vertices they have.
std::size_t keepReaching(Vertices& vertices, std::size_t corners, const Fence3DObject& fence,
                         const glm::dmat4& sceneToModel)
{
    std::size_t kept = 0;
    std::vector<glm::dvec3> primitive(corners);
    for (std::size_t first = 0; first + corners <= vertices.size(); first += corners) {
        bool isWhole = true;
        for (std::size_t i = 0; i < corners; ++i) {
            const glm::dvec4 vertex(vertices[first + i]);
            isWhole &= vertex.w != 0.0; // what was not filled reads as zeros
            primitive[i] = glm::dvec3(sceneToModel * (vertex / vertex.w));
        }
        if (!isWhole || !fence.reaches(primitive)) continue;
        std::copy_n(&vertices[first], corners, &vertices[kept]);
        kept += corners;
    }
    return kept;
}

} // namespace

unsigned int leaveOutUnfenced(OpenGLFunctions& gl, unsigned int buffer, int corners,
                              const Fence3DObject& fence, const glm::dmat4& sceneToModel)
{
    if (buffer == 0) return 0;
    gl.glBindBuffer(GL_COPY_READ_BUFFER, buffer);
    Vertices vertices = read(gl);
    const std::size_t kept = keepReaching(vertices, static_cast<std::size_t>(corners), fence, sceneToModel);
    if (kept != 0 && kept != vertices.size())
        gl.glBufferData(GL_COPY_READ_BUFFER, static_cast<GLsizeiptr>(kept * sizeof(glm::vec4)),
                        vertices.data(), GL_DYNAMIC_DRAW);
    gl.glBindBuffer(GL_COPY_READ_BUFFER, 0);
    if (kept != 0) return buffer;
    gl.glDeleteBuffers(1, &buffer);
    return 0;
}
