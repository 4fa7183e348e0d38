#include <Viewer3dModule/shaders/Uniforms.h>

#include <Viewer3dModule/shaders/KnownOfProgram.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>

namespace uniforms {

// OpenGL itself ignores the location -1.

void set(OpenGLFunctions& gl, int location, int value)
{
    gl.glUniform1i(location, value);
}

void set(OpenGLFunctions& gl, int location, unsigned int value)
{
    gl.glUniform1ui(location, value);
}

void set(OpenGLFunctions& gl, int location, float value)
{
    gl.glUniform1f(location, value);
}

void set(OpenGLFunctions& gl, int location, bool value)
{
    gl.glUniform1i(location, value ? 1 : 0);
}

void set(OpenGLFunctions& gl, int location, const glm::uvec2& value)
{
    gl.glUniform2ui(location, value.x, value.y);
}

void set(OpenGLFunctions& gl, int location, const glm::vec2& value)
{
    gl.glUniform2f(location, value.x, value.y);
}

void set(OpenGLFunctions& gl, int location, const glm::vec3& value)
{
    gl.glUniform3f(location, value.x, value.y, value.z);
}

void set(OpenGLFunctions& gl, int location, const glm::vec4& value)
{
    gl.glUniform4f(location, value.x, value.y, value.z, value.w);
}

void set(OpenGLFunctions& gl, int location, const glm::mat3& value)
{
    gl.glUniformMatrix3fv(location, 1, GL_FALSE, glm::value_ptr(value));
}

void set(OpenGLFunctions& gl, int location, const glm::mat4& value)
{
    gl.glUniformMatrix4fv(location, 1, GL_FALSE, glm::value_ptr(value));
}

glm::vec4 vectorOf(const QColor& color)
{
    return {static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
            static_cast<float>(color.blueF()), static_cast<float>(color.alphaF())};
}

void set(OpenGLFunctions& gl, int location, const QColor& value)
{
    set(gl, location, vectorOf(value));
}

} // namespace uniforms

namespace {

// Of a program that a host has taken from a binary nothing is known.
bool drawsAsTold(const QOpenGLShaderProgram& program)
{
    const QList<QOpenGLShader*> stages = program.shaders();
    return !stages.isEmpty() && std::all_of(stages.begin(), stages.end(), [](const QOpenGLShader* stage) {
        return (stage->shaderType() & ~(QOpenGLShader::Vertex | QOpenGLShader::Fragment)) == 0;
    });
}

PassUniforms ask(QOpenGLShaderProgram& program)
{
    PassUniforms uniforms;
    uniforms.drawMode = program.uniformLocation("draw_mode");
    uniforms.projection = program.uniformLocation("projection");
    uniforms.view = program.uniformLocation("view");
    uniforms.viewport = program.uniformLocation("viewport");
    uniforms.viewportInverted = program.uniformLocation("viewport_inverted");
    uniforms.model = program.uniformLocation("model");
    uniforms.normalMatrix = program.uniformLocation("normalMatrix");
    uniforms.lightDirection = program.uniformLocation("uLightDirection");
    uniforms.lightMode = program.uniformLocation("uLightMode");
    uniforms.selectionColor = program.uniformLocation("selection_color");
    uniforms.interactionColor = program.uniformLocation("interaction_color");
    uniforms.itemId = program.uniformLocation("item_id");
    uniforms.itemFlags = program.uniformLocation("item_flags");
    uniforms.itemIndex = program.uniformLocation("item_index");
    uniforms.glueMask = program.uniformLocation("glue_mask");
    uniforms.firstItem = program.uniformLocation("first_item");
    uniforms.selectionRect = program.uniformLocation("selection_rect");
    uniforms.fenceToUse = program.uniformLocation("fence_to_use");
    uniforms.fenceGrayPreview = program.uniformLocation("fence_gray_preview");
    uniforms.fenceFromScene = program.uniformLocation("fence_from_scene");
    uniforms.fenceInnerBox = program.uniformLocation("fence_inner_box");
    uniforms.fenceOuterBox = program.uniformLocation("fence_outer_box");
    uniforms.fenceEnds = program.uniformLocation("fence_ends");
    uniforms.fenceCount = program.uniformLocation("fence_count");
    uniforms.sphereFenceCenter = program.uniformLocation("sphere_fence_center");
    uniforms.sphereFenceRadius = program.uniformLocation("sphere_fence_radius");
    uniforms.items = ItemUniforms::of(program);
    uniforms.readsModels = program.attributeLocation("model") >= 0;
    uniforms.readsNormalMatrices = program.attributeLocation("normalMatrix") >= 0;
    uniforms.showsOwnAlphas = showsOwnAlphas(program);
    uniforms.drawsAsTold = drawsAsTold(program);
    return uniforms;
}

} // namespace

PassUniforms PassUniforms::of(QOpenGLShaderProgram& program)
{
    return knownOf<PassUniforms>(program, "pass_uniforms", [&] { return ask(program); });
}

ItemUniforms ItemUniforms::of(QOpenGLShaderProgram& program)
{
    ItemUniforms uniforms;
    uniforms.itemColor = program.uniformLocation("item_color");
    uniforms.penWidth = program.uniformLocation("pen_width");
    uniforms.dashSize = program.uniformLocation("u_dashSize");
    uniforms.gapSize = program.uniformLocation("u_gapSize");
    uniforms.resolution = program.uniformLocation("u_resolution");
    uniforms.colorMode = program.uniformLocation("uColorMode");
    uniforms.texture0 = program.uniformLocation("uTexture0");
    uniforms.filledTextureBack = program.uniformLocation("filled_texture_back");
    uniforms.materialMode = program.uniformLocation("uMaterialMode");
    uniforms.offset = program.uniformLocation("offset");
    uniforms.texture = program.uniformLocation("uTexture");
    uniforms.textureTop = program.uniformLocation("uTexTop");
    uniforms.textureBottom = program.uniformLocation("uTexBottom");
    uniforms.wireMode = program.uniformLocation("uWireMode");
    const QVariant numbersVertices = program.property(numbersVerticesProperty);
    uniforms.numbersVertices = !numbersVertices.isValid() || numbersVertices.toBool();
    return uniforms;
}
