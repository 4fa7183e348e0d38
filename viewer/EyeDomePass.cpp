#include <viewer/EyeDomePass.h>

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/Uniforms.h>

namespace {

constexpr int colorUnit = 0, depthUnit = 1; // of textures

/// What a pass over a frame changes, put back at the end.
class StateGuard
{
public:
    explicit StateGuard(OpenGLFunctions& gl)
        : m_gl(gl)
        , m_blends(gl.glIsEnabled(GL_BLEND))
        , m_testsDepth(gl.glIsEnabled(GL_DEPTH_TEST))
    {
        gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_target);
        gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_readTarget);
        gl.glGetIntegerv(GL_VIEWPORT, m_viewport);
        gl.glGetIntegerv(GL_CURRENT_PROGRAM, &m_program);
        gl.glGetIntegerv(GL_ACTIVE_TEXTURE, &m_unit);
    }
    ~StateGuard()
    {
        m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_target));
        m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_readTarget));
        m_gl.glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
        if (m_blends) m_gl.glEnable(GL_BLEND);
        if (m_testsDepth) m_gl.glEnable(GL_DEPTH_TEST);
        m_gl.glUseProgram(static_cast<GLuint>(m_program));
        m_gl.glActiveTexture(static_cast<GLenum>(m_unit));
    }
    StateGuard(const StateGuard&) = delete;
    StateGuard& operator=(const StateGuard&) = delete;

    GLuint target() const { return static_cast<GLuint>(m_target); }

private:
    OpenGLFunctions& m_gl;
    GLboolean m_blends;
    GLboolean m_testsDepth;
    GLint m_target = 0;
    GLint m_readTarget = 0;
    GLint m_viewport[4] = {0, 0, 0, 0};
    GLint m_program = 0;
    GLint m_unit = GL_TEXTURE0;
};

/// Textures of a frame's colour and depth, of one sample a pixel, on the units where the pass reads them, for
/// as long as it lives. Made for each frame: that takes next to nothing beside the pass itself, frames of
/// changing sizes need no book-keeping, and nothing is left to be deleted in a context that may be gone.
class FrameTextures
{
public:
    FrameTextures(OpenGLFunctions& gl, const QSize& size)
        : m_gl(gl)
    {
        gl.glGenTextures(2, m_textures);
        gl.glGenFramebuffers(1, &m_frameBuffer);
        gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_frameBuffer);
        make(colorUnit, GL_RGBA8, GL_COLOR_ATTACHMENT0, size);
        make(depthUnit, GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL_ATTACHMENT, size);
    }
    ~FrameTextures()
    {
        for (const int unit : {colorUnit, depthUnit}) {
            m_gl.glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
            m_gl.glBindTexture(GL_TEXTURE_2D, 0);
        }
        m_gl.glDeleteFramebuffers(1, &m_frameBuffer);
        m_gl.glDeleteTextures(2, m_textures);
    }
    FrameTextures(const FrameTextures&) = delete;
    FrameTextures& operator=(const FrameTextures&) = delete;

    /// Takes colour and depth of a frame buffer, resolved where it has several samples a pixel.
    void copy(GLuint from, const QSize& size)
    {
        m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
        m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_frameBuffer);
        m_gl.glBlitFramebuffer(0, 0, size.width(), size.height(), 0, 0, size.width(), size.height(),
                               GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT, GL_NEAREST);
    }

private:
    // Filters that ask for no smaller sizes of the texture; comparison is off from the start.
    void make(int unit, GLenum format, GLenum attachment, const QSize& size)
    {
        m_gl.glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        m_gl.glBindTexture(GL_TEXTURE_2D, m_textures[unit]);
        m_gl.glTexStorage2D(GL_TEXTURE_2D, 1, format, size.width(), size.height());
        m_gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        m_gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        m_gl.glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, attachment, GL_TEXTURE_2D, m_textures[unit], 0);
    }

    OpenGLFunctions& m_gl;
    GLuint m_textures[2] = {0, 0};
    GLuint m_frameBuffer = 0;
};

void drawRectangle(OpenGLFunctions& gl, unsigned int vertexArray)
{
    GlBuffer corners, texCoords;
    corners.upload(gl, std::vector<glm::vec3>{{-1, -1, 0}, {1, -1, 0}, {-1, 1, 0}, {1, 1, 0}},
                   GL_STREAM_DRAW);
    texCoords.upload(gl, std::vector<glm::vec2>{{0, 0}, {1, 0}, {0, 1}, {1, 1}}, GL_STREAM_DRAW);
    VertexArrayBinding binding(gl, vertexArray);
    binding.setFloats(VertexAttribute::Coords, 3, corners);
    binding.setFloats(VertexAttribute::TexCoords, 2, texCoords);
    gl.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

} // namespace

EyeDomePass::EyeDomePass(Scene3d& scene)
    : m_scene(scene)
{
}

// The frame goes on in the caller's context, which building makes way for the scene's.
QOpenGLShaderProgram* EyeDomePass::program()
{
    if (!m_program) {
        const CurrentContextGuard callers;
        m_program = m_scene.createProgram({QStringLiteral("shader:Viewer3dModule/common.vertex.glsl"),
                                           QStringLiteral("shader:Viewer3dModule/edl.fragment.glsl")},
                                          {"RX_USE_PER_VERTEX_TEX_COORDS"}, {});
    }
    return m_program && m_program->isLinked() ? m_program.data() : nullptr;
}

void EyeDomePass::apply(EyeDomeShading shading, const QSize& size, const glm::dmat4& projection,
                        unsigned int vertexArray)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (shading == EyeDomeShading::Off || !gl || size.isEmpty() || !program()) return;
    const StateGuard before(*gl);
    FrameTextures frame(*gl, size);
    frame.copy(before.target(), size);

    gl->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, before.target());
    gl->glViewport(0, 0, size.width(), size.height());
    gl->glDisable(GL_BLEND);
    gl->glDisable(GL_DEPTH_TEST); // nor is depth written then: it stays to the bit
    m_program->bind();
    const auto set = [&](const char* name, const auto& value) {
        uniforms::set(*gl, m_program->uniformLocation(name), value);
    };
    set("rgb_texture", colorUnit);
    set("depth_texture", depthUnit);
    set("edl_shading_type", static_cast<int>(shading));
    // In the camera's frame the neighbourhood is a disc across the line of sight.
    set("mvp_inv", glm::mat4(glm::inverse(projection)));
    drawRectangle(*gl, vertexArray);
}
