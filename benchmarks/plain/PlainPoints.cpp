#include <benchmarks/plain/PlainPoints.h>

namespace {

const char* const vertex = R"(#version 430 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 color;
uniform mat4 viewProjection;
flat out vec4 shownColor;
void main()
{
    gl_Position = viewProjection * vec4(position, 1.0);
    gl_PointSize = 2.0;
    shownColor = color;
})";

const char* const fragment = R"(#version 430 core
flat in vec4 shownColor;
layout(location = 0) out vec4 result;
void main() { result = shownColor; })";

} // namespace

PlainPoints::PlainPoints(PlainContext& context, const PointSet& set, const View& view)
    : m_context(context)
    , m_view(view)
    , m_count(static_cast<GLsizei>(set.positions.size()))
    , m_program(context.program({{GL_VERTEX_SHADER, vertex}, {GL_FRAGMENT_SHADER, fragment}}))
    , m_passUniforms(context.gl(), m_program)
{
    PlainContext::Functions& gl = context.gl();
    gl.glDisable(GL_BLEND);
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, set.positions);
    gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    context.buffer(GL_ARRAY_BUFFER, set.colors);
    gl.glVertexAttribPointer(1, 4, GL_UNSIGNED_BYTE, GL_TRUE, 0, nullptr);
    gl.glEnableVertexAttribArray(0);
    gl.glEnableVertexAttribArray(1);
}

void PlainPoints::draw()
{
    PlainContext::Functions& gl = m_context.gl();
    const glm::mat4 viewProjection = m_view.projection * m_view.view;
    gl.glUseProgram(m_program);
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    gl.glBindVertexArray(m_vertexArray);
    gl.glDrawArrays(GL_POINTS, 0, m_count);
}
