#include <Viewer3dModule/drawables/SurfaceBuffers.h>

#include <Viewer3dModule/drawables/ItemLook.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <QtCore/QVariant>
#include <QtGui/QOpenGLShaderProgram>

void SurfaceBuffers::upload(OpenGLFunctions& gl, const std::vector<glm::vec3>& positions,
                            const std::vector<glm::vec3>& normals, int vertexCount)
{
    m_positions.upload(gl, positions, GL_DYNAMIC_DRAW);
    m_normals.upload(gl, normals, GL_DYNAMIC_DRAW);
    if (vertexCount != m_vertexCount) m_texCoordCount = 0;
    m_vertexCount = vertexCount;
    m_totalCount = positions.size();
}

void SurfaceBuffers::setVertex(int index, const glm::vec3& vertex)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || index < 0 || index >= m_vertexCount) return;
    m_positions.replace(*gl, static_cast<std::size_t>(index), vertex);
}

void SurfaceBuffers::setTexture(OpenGLFunctions& gl, unsigned int texture,
                                const std::vector<glm::vec2>& coords)
{
    m_texture = texture;
    m_texCoords.upload(gl, coords, GL_DYNAMIC_DRAW);
    m_texCoordCount = coords.size();
    gl.glBindBuffer(GL_ARRAY_BUFFER, 0);
}

bool SurfaceBuffers::takesSurfaces(const PaintContext& context)
{
    const QVariant kinds = context.program ? context.program->property("primitives") : QVariant();
    if (!kinds.isValid()) return true;
    return (kinds.toInt() & (PrimitiveBit::Triangles | PrimitiveBit::Adjacency)) == PrimitiveBit::Triangles;
}

void SurfaceBuffers::draw(const PaintContext& context, const Calls& drawLines, const Calls& drawSurface) const
{
    // Compared as a whole: where lines and surfaces are asked for, the surface shows.
    const bool linesOnly = context.primitives == PrimitiveBit::Lines;
    if (context.primitives == PrimitiveBit::Points || (!linesOnly && !takesSurfaces(context))) return;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || m_totalCount == 0) return;
    VertexArrayBinding binding(*gl, context);
    const bool hasTexCoords = m_texCoordCount == m_totalCount;
    gl->glActiveTexture(GL_TEXTURE0);
    if (m_texture != 0 && hasTexCoords) gl->glBindTexture(GL_TEXTURE_2D, m_texture);
    binding.setFloats(VertexAttribute::Coords, 3, m_positions);
    if (hasTexCoords) binding.setFloats(VertexAttribute::TexCoords, 2, m_texCoords);
    if (!linesOnly) binding.setFloats(VertexAttribute::Normal, 3, m_normals);
    binding.ready();
    if (linesOnly)
        drawLines(binding);
    else
        drawSurface(binding);
    gl->glBindTexture(GL_TEXTURE_2D, 0);
}

void SurfaceBuffers::setColor(const PaintContext& context, const QColor& color)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !context.program) return;
    ItemLook look(*gl, context);
    look.setColor(color);
    look.setColorMode(ColorMode::Item);
    look.setMaterialMode(0);
}
