#include <Viewer3dModule/drawables/DrawableShaderCylinder.h>

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/ShaderShape.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/drawers/PolygonModeDrawer.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtCore/QStringList>

struct DrawableShaderCylinder::Impl
{
    DrawableShaderCylinder* cylinder; // what it draws; not owned
    bool wireMode = false;
    GlBuffer vertexBuffer;
};

DrawableShaderCylinder::DrawableShaderCylinder()
    : m_impl(std::make_unique<Impl>())
{
    m_impl->cylinder = this;
}

DrawableShaderCylinder::~DrawableShaderCylinder() = default;

int DrawableShaderCylinder::getDrawerType() const
{
    return DrawerType::ShaderCylinder;
}

Item3dDrawer* DrawableShaderCylinder::getDrawer(Scene3d* scene) const
{
    return shader_shape::getDrawer(scene, DrawerType::ShaderCylinder, DrawerType::ShaderCylinder,
                                   {QStringLiteral("shader:Viewer3dModule/sphere.vertex.glsl"),
                                    QStringLiteral("shader:Viewer3dModule/cylinder.geom.glsl"),
                                    QStringLiteral("shader:Viewer3dModule/sphereCube.fragment.glsl")});
}

void DrawableShaderCylinder::setWireMode(bool wire)
{
    m_impl->wireMode = wire;
}

void DrawableShaderCylinder::draw(const PaintContext& context, int instances)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || !context.program) return;
    uniforms::set(*gl, Item3dDrawer::itemUniforms(context).wireMode, m_impl->wireMode);
    const PolygonModeScope mode(*gl, context, m_impl->wireMode ? GL_LINE : GL_FILL);
    const shader_shape::PointBinding point(*gl, context, m_impl->vertexBuffer);
    gl->glDrawArraysInstanced(GL_POINTS, 0, 1, instances);
}
