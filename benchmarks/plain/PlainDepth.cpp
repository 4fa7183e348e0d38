#include <benchmarks/plain/PlainDepth.h>

#include <limits>

namespace {

const char* const vertex = R"(#version 430 core
layout(location = 0) in vec3 position;
uniform mat4 viewProjection;
void main() { gl_Position = viewProjection * vec4(position, 1.0); })";

} // namespace

PlainDepth::PlainDepth(PlainContext& context, const GroundMesh& mesh)
    : m_context(context)
    , m_indexCount(static_cast<GLsizei>(mesh.indices.size()))
    , m_program(context.program({{GL_VERTEX_SHADER, vertex}}))
    , m_passUniforms(context.gl(), m_program)
{
    PlainContext::Functions& gl = context.gl();
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, mesh.positions);
    gl.glEnableVertexAttribArray(0);
    gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    context.buffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices);

    GLuint depths = 0;
    gl.glGenRenderbuffers(1, &depths);
    gl.glBindRenderbuffer(GL_RENDERBUFFER, depths);
    gl.glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT32F, context.size().width(),
                             context.size().height());
    gl.glGenFramebuffers(1, &m_framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depths);
    gl.glDrawBuffer(GL_NONE);
    gl.glReadBuffer(GL_NONE);
    gl.glDisable(GL_BLEND);
}

std::vector<float> PlainDepth::distances(const glm::dmat4& view, const glm::dmat4& projection)
{
    PlainContext::Functions& gl = m_context.gl();
    const QSize size = m_context.size();
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl.glViewport(0, 0, size.width(), size.height());
    gl.glClear(GL_DEPTH_BUFFER_BIT);
    gl.glUseProgram(m_program);
    const glm::mat4 viewProjection(projection * view);
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    gl.glBindVertexArray(m_vertexArray);
    gl.glDrawElements(GL_TRIANGLES, m_indexCount, GL_UNSIGNED_INT, nullptr);

    std::vector<float> values(static_cast<std::size_t>(size.width()) *
                              static_cast<std::size_t>(size.height()));
    gl.glReadPixels(0, 0, size.width(), size.height(), GL_DEPTH_COMPONENT, GL_FLOAT, values.data());
    const auto a = static_cast<float>(projection[2][2]), b = static_cast<float>(projection[3][2]);
    for (float& value : values)
        value = value == 1.0f ? std::numeric_limits<float>::quiet_NaN() : b / (2.0f * value - 1.0f + a);
    return values;
}
