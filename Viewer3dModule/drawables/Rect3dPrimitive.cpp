#include <Viewer3dModule/drawables/Rect3dPrimitive.h>

#include <Viewer3dModule/drawables/SurfaceBuffers.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawers/PaintContext.h>

Rect3dPrimitive::Rect3dPrimitive()
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return;
    const std::vector<glm::vec3> positions = {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}};
    const std::vector<glm::vec2> texCoords = {{0, 1}, {0, 0}, {1, 1}, {1, 0}};
    m_positions.upload(*gl, positions, GL_STATIC_DRAW);
    m_texCoords.upload(*gl, texCoords, GL_STATIC_DRAW);
}

void Rect3dPrimitive::draw(const PaintContext& context, int)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || m_positions.name() == 0 || !SurfaceBuffers::takesSurfaces(context)) return;
    VertexArrayBinding binding(*gl, context);
    binding.setFloats(VertexAttribute::Coords, 3, m_positions);
    binding.setFloats(VertexAttribute::TexCoords, 2, m_texCoords);
    binding.ready();
    gl->glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}
