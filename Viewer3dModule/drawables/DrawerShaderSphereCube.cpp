#include <Viewer3dModule/drawables/DrawerShaderSphereCube.h>

#include <Viewer3dModule/drawables/ShaderShape.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/drawers/PolygonModeDrawer.h>
#include <Viewer3dModule/shaders/KnownOfProgram.h>
#include <Viewer3dModule/shaders/Uniforms.h>

namespace {

struct SphereUniforms
{
    int tessLevelOuter, tessLevelInner, textureScale, textureShift;
};

SphereUniforms uniformsOf(QOpenGLShaderProgram& program)
{
    return knownOf<SphereUniforms>(program, "sphere_uniforms", [&] {
        return SphereUniforms{program.uniformLocation("uTessLevelOuter"),
                              program.uniformLocation("uTessLevelInner"),
                              program.uniformLocation("uTextureK"), program.uniformLocation("uTextureB")};
    });
}

} // namespace

DrawerShaderSphereCube::DrawerShaderSphereCube(DrawableShaderSphere* owner)
    : sphere(owner)
{
}

QStringList DrawerShaderSphereCube::getShaderFiles(int) const
{
    return {QStringLiteral("shader:Viewer3dModule/sphere.vertex.glsl"),
            QStringLiteral("shader:Viewer3dModule/sphereCube.tesc.glsl"),
            QStringLiteral("shader:Viewer3dModule/sphereCube.tese.glsl"),
            QStringLiteral("shader:Viewer3dModule/sphereCube.geom.glsl"),
            QStringLiteral("shader:Viewer3dModule/sphereCube.fragment.glsl")};
}

void DrawerShaderSphereCube::draw(const PaintContext& context)
{
    OpenGLFunctions* gl = currentGLFunctions();
    QOpenGLShaderProgram* program = context.program;
    if (!gl || !program) return;
    const SphereUniforms locations = uniformsOf(*program);
    uniforms::set(*gl, locations.tessLevelOuter, tessLevelOuter);
    uniforms::set(*gl, locations.tessLevelInner, tessLevelInner);
    // The texture begins at the height of the top, from the lower pole 0 to the upper one 1, and ends at that
    // of the bottom.
    const float top = (textureFovTop + 1.0f) / 2.0f;
    const float bottom = (textureFovBottom + 1.0f) / 2.0f;
    const float slope = -1.0f / (top - bottom);
    uniforms::set(*gl, locations.textureScale, slope);
    uniforms::set(*gl, locations.textureShift, -top * slope);
    const PolygonModeScope mode(*gl, context, wireMode ? GL_LINE : GL_FILL);
    const shader_shape::PointBinding point(*gl, context, m_vertexBuffer);
    gl->glPatchParameteri(GL_PATCH_VERTICES, 1);
    gl->glDrawArrays(GL_PATCHES, 0, 1);
}
