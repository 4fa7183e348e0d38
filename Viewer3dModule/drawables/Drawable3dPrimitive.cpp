#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>

#include <limits>

std::vector<glm::vec3> Drawable3dPrimitive::getVertices()
{
    OpenGLFunctions* gl = getGLFunctions();
    const unsigned int vbo = getVBO();
    const int count = getVertexCount();
    if (!gl || vbo == 0 || count <= 0) return {};
    std::vector<glm::vec3> vertices(static_cast<std::size_t>(count), glm::vec3(0.0f));
    gl->glBindBuffer(GL_ARRAY_BUFFER, vbo);
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(vertices.size() * sizeof(glm::vec3)),
                           vertices.data());
    return vertices;
}

glm::vec3 Drawable3dPrimitive::getVertex(int index)
{
    glm::vec3 vertex(std::numeric_limits<float>::quiet_NaN());
    OpenGLFunctions* gl = getGLFunctions();
    const unsigned int vbo = getVBO();
    if (!gl || vbo == 0 || index < 0 || index >= getVertexCount()) return vertex;
    gl->glBindBuffer(GL_ARRAY_BUFFER, vbo);
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, index * static_cast<GLintptr>(sizeof(glm::vec3)),
                           sizeof(glm::vec3), &vertex);
    return vertex;
}

Drawable3dPrimitive::GeometryInfo Drawable3dPrimitive::getGeometryInfo()
{
    return {};
}

Drawable3dPrimitive::Geometry Drawable3dPrimitive::generateGeometry()
{
    return {0u, 0u, 0u};
}

bool Drawable3dPrimitive::hasTransparency() const
{
    return false;
}

int Drawable3dPrimitive::getVertexCount() const
{
    return 0;
}

unsigned int Drawable3dPrimitive::getVBO() const
{
    return 0;
}
