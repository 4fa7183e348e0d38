#include <Viewer3dModule/scene/holdsVertices.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/scene/PictureVolume.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <cstddef>
#include <vector>

namespace {

/// The vertices of a captured buffer, which is deleted, in homogeneous scene coordinates. What was not filled
/// is all zeros.
std::vector<glm::vec4> takeVertices(OpenGLFunctions& gl, unsigned int buffer)
{
    if (buffer == 0) return {};
    GLint64 bytes = 0;
    gl.glBindBuffer(GL_COPY_READ_BUFFER, buffer);
    gl.glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &bytes);
    std::vector<glm::vec4> vertices(static_cast<std::size_t>(bytes) / sizeof(glm::vec4));
    gl.glGetBufferSubData(GL_COPY_READ_BUFFER, 0,
                          static_cast<GLsizeiptr>(vertices.size() * sizeof(glm::vec4)), vertices.data());
    gl.glBindBuffer(GL_COPY_READ_BUFFER, 0);
    gl.glDeleteBuffers(1, &buffer);
    return vertices;
}

} // namespace

bool holdsVertices(OpenGLFunctions& gl, const PictureVolume& volume, Scene3d& scene, Drawable3dItem& item)
{
    std::size_t count = 0, held = 0;
    const auto [points, lines, triangles] = scene.generateItemGeometry(&item);
    for (const unsigned int buffer : {points, lines, triangles})
        for (const glm::vec4& vertex : takeVertices(gl, buffer)) {
            if (vertex.w == 0.0f) continue;
            const glm::dvec3 point = glm::dvec3(vertex) / double(vertex.w);
            ++count;
            held += volume.holds(gmx::BoundingBox(point, point));
        }
    return count != 0 && held == count;
}
