#include <Viewer3dModule/drawables/ShaderShape.h>

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawables/vertex_attributes.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/drawers/PolygonModeDrawer.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <glm/glm.hpp>

#include <vector>

namespace shader_shape {

Item3dDrawer* getDrawer(Scene3d* scene, int visibilityType, int drawerType, const QStringList& files)
{
    if (!scene->isHasDrawer(visibilityType, drawerType)) {
        QOpenGLShaderProgram* program = scene->createProgram(files, {}, {});
        scene->addDrawer(visibilityType, drawerType, std::make_unique<PolygonModeDrawer>(scene, program));
    }
    return scene->getDrawer(visibilityType, drawerType);
}

PointBinding::PointBinding(OpenGLFunctions& gl, const PaintContext& context, GlBuffer& buffer)
    : m_gl(gl)
{
    if (buffer.name() == 0) buffer.upload(gl, std::vector<glm::vec3>(1, glm::vec3(0.0f)), GL_STATIC_DRAW);
    if (context.vertexArray != 0) gl.glBindVertexArray(context.vertexArray);
    vertex_attributes::setFloats(gl, VertexAttribute::Coords, buffer, {3, 0, 0, 0});
}

PointBinding::~PointBinding()
{
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, 0);
    vertex_attributes::disable(m_gl, VertexAttribute::Coords);
    m_gl.glBindVertexArray(0);
}

} // namespace shader_shape
