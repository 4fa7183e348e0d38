#include <benchmarks/plain/PlainPlaced.h>

#include <array>
#include <cstdint>

namespace {

const char* const placedVertex = R"(#version 430 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 color;
uniform mat4 viewProjection;
flat out vec4 shownColor;
void main()
{
    gl_Position = viewProjection * vec4(position, 1.0);
    shownColor = color;
})";

const char* const placedFragment = R"(#version 430 core
flat in vec4 shownColor;
layout(location = 0) out vec4 result;
void main() { result = shownColor; })";

struct PlacedCommand
{
    GLuint count, instances, first, item;
};

} // namespace

PlainPlaced::PlainPlaced(PlainContext& context, const LineSet& set, const View& view)
    : m_context(context)
    , m_view(view)
    , m_program(context.program({{GL_VERTEX_SHADER, placedVertex}, {GL_FRAGMENT_SHADER, placedFragment}}))
    , m_passUniforms(context.gl(), m_program)
    , m_count(static_cast<GLsizei>(set.lines.size()))
{
    std::vector<glm::vec3> positions;
    std::vector<std::array<std::uint8_t, 4>> colors;
    std::vector<PlacedCommand> commands;
    const auto byteOf = [](int value) { return static_cast<std::uint8_t>(value); };
    for (const LineSet::Line& line : set.lines) {
        const auto index = static_cast<GLuint>(colors.size());
        commands.push_back({LineSet::VerticesPerLine, 1, index * LineSet::VerticesPerLine, index});
        for (const glm::vec3& vertex : set.copyOf(index))
            positions.emplace_back(line.matrix * glm::vec4(vertex, 1.0f));
        colors.push_back({byteOf(line.color.red()), byteOf(line.color.green()), byteOf(line.color.blue()),
                          byteOf(line.color.alpha())});
    }

    PlainContext::Functions& gl = context.gl();
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, positions);
    gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    context.buffer(GL_ARRAY_BUFFER, colors);
    gl.glVertexAttribPointer(1, 4, GL_UNSIGNED_BYTE, GL_TRUE, 0, nullptr);
    gl.glVertexAttribDivisor(1, 1);
    gl.glEnableVertexAttribArray(0);
    gl.glEnableVertexAttribArray(1);
    m_commands = context.buffer(GL_DRAW_INDIRECT_BUFFER, commands);
}

void PlainPlaced::draw()
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glDisable(GL_BLEND);
    gl.glUseProgram(m_program);
    const glm::mat4 viewProjection = m_view.projection * m_view.view;
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, &viewProjection[0][0]);
    gl.glBindVertexArray(m_vertexArray);
    gl.glBindBuffer(GL_DRAW_INDIRECT_BUFFER, m_commands);
    gl.glMultiDrawArraysIndirect(GL_LINE_STRIP, nullptr, m_count, 0);
}
