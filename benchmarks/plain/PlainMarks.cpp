#include <benchmarks/plain/PlainMarks.h>

#include <benchmarks/plain/ItemSources.h>

#include <numeric>

namespace {

const char* const vertex = R"(#version 430 core
layout(location = 0) in vec3 place;
layout(location = 1) in int flags;
layout(location = 2) in uvec2 id;
uniform mat4 viewProjection;
uniform vec4 color;
uniform vec4 chosenColor;
uniform float width;
flat out vec4 shownColor;
flat out uvec2 shownId;
void main()
{
    gl_Position = viewProjection * vec4(place, 1.0);
    gl_PointSize = width;
    shownColor = flags == 1 ? chosenColor : color;
    shownId = id;
})";

const char* const fragment = R"(#version 430 core
flat in vec4 shownColor;
flat in uvec2 shownId;
)" PLAIN_SHOW R"(
void main()
{
    vec2 fromCentre = gl_PointCoord - 0.5;
    if (dot(fromCentre, fromCentre) > 0.25) discard;
    show(shownColor, shownId);
})";

} // namespace

PlainMarks::PlainMarks(PlainContext& context, const std::vector<glm::vec3>& places, const View& view)
    : m_context(context)
    , m_view(view)
    , m_count(static_cast<GLsizei>(places.size()))
    , m_program(context.program({{GL_VERTEX_SHADER, vertex}, {GL_FRAGMENT_SHADER, fragment}}))
    , m_passUniforms(context.gl(), m_program)
{
    PlainContext::Functions& gl = context.gl();
    std::vector<std::uint64_t> ids(places.size());
    std::iota(ids.begin(), ids.end(), 1u);
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, places);
    gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    context.buffer(GL_ARRAY_BUFFER, std::vector<std::int32_t>(places.size(), 0));
    gl.glVertexAttribIPointer(1, 1, GL_INT, 0, nullptr);
    context.buffer(GL_ARRAY_BUFFER, ids);
    gl.glVertexAttribIPointer(2, 2, GL_UNSIGNED_INT, 0, nullptr);
    for (GLuint i = 0; i < 3; ++i) {
        gl.glEnableVertexAttribArray(i);
        gl.glVertexAttribDivisor(i, 1);
    }
}

void PlainMarks::draw()
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glUseProgram(m_program);
    const glm::mat4 viewProjection = m_view.projection * m_view.view;
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    gl.glUniform4f(m_passUniforms.color, 1.0f, 0.0f, 0.0f, 1.0f);
    gl.glUniform4f(m_passUniforms.chosenColor, 1.0f, 1.0f, 0.0f, 1.0f);
    gl.glUniform1f(m_passUniforms.width, 5.0f);
    gl.glBindVertexArray(m_vertexArray);
    gl.glDrawArraysInstanced(GL_POINTS, 0, 1, m_count);
}
