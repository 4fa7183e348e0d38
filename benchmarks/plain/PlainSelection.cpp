#include <benchmarks/plain/PlainSelection.h>

#include <algorithm>

namespace {

const char* const vertex = R"(#version 430 core
layout(location = 0) in vec3 position;
uniform mat4 viewProjection;
uniform mat4 model;
uniform uint number;
flat out uint item;
void main()
{
    gl_Position = viewProjection * (model * vec4(position, 1.0));
    item = number;
})";

const char* const fragment = R"(#version 430 core
flat in uint item;
layout(std430, binding = 0) buffer Bits { uint bits[]; };
void main() { atomicOr(bits[item >> 5], 1u << (item & 31u)); })";

} // namespace

PlainSelection::PlainSelection(PlainContext& context, const LineSet& set, const View& view)
    : m_context(context)
    , m_view(view)
    , m_program(context.program({{GL_VERTEX_SHADER, vertex}, {GL_FRAGMENT_SHADER, fragment}}))
    , m_passUniforms(context.gl(), m_program)
    , m_model(context.gl().glGetUniformLocation(m_program, "model"))
    , m_number(context.gl().glGetUniformLocation(m_program, "number"))
{
    for (std::size_t i = 0; i < set.lines.size(); ++i) {
        m_matrices.push_back(set.lines[i].matrix);
        m_spheres.push_back(sphereOf(set.lines[i].matrix, set.verticesOf(i), LineSet::VerticesPerLine));
    }
    PlainContext::Functions& gl = context.gl();
    gl.glDisable(GL_DEPTH_TEST);
    gl.glDisable(GL_BLEND);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, set.vertices);
    gl.glEnableVertexAttribArray(0);
    gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    m_bits = context.buffer(GL_SHADER_STORAGE_BUFFER, std::vector<std::uint32_t>(set.lines.size() / 32 + 1));
}

std::vector<std::uint32_t> PlainSelection::select(const QRect& rect)
{
    const glm::vec2 size(m_view.size.width(), m_view.size.height());
    const float left = static_cast<float>(rect.left()), top = static_cast<float>(rect.top());
    const float right = left + static_cast<float>(rect.width()),
                bottom = top + static_cast<float>(rect.height());
    const auto planes = sidePlanes(m_view.projection * m_view.view,
                                   {2.0f * left / size.x - 1.0f, 1.0f - 2.0f * bottom / size.y},
                                   {2.0f * right / size.x - 1.0f, 1.0f - 2.0f * top / size.y});
    std::vector<std::uint32_t> found;
    std::vector<std::size_t> straddling;
    for (std::size_t i = 0; i < m_spheres.size(); ++i) {
        const float distance = leastDistance(m_spheres[i], planes);
        if (distance > m_spheres[i].radius)
            found.push_back(static_cast<std::uint32_t>(i + 1));
        else if (distance > -m_spheres[i].radius)
            straddling.push_back(i);
    }
    const std::vector<std::uint32_t> drawn = drawAndRead(rect, straddling);
    found.insert(found.end(), drawn.begin(), drawn.end());
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::uint32_t> PlainSelection::drawAndRead(const QRect& rect,
                                                       const std::vector<std::size_t>& straddling)
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glScissor(rect.left(), m_view.size.height() - rect.top() - rect.height(), rect.width(), rect.height());
    gl.glUseProgram(m_program);
    gl.glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 0, m_bits);
    gl.glClearBufferData(GL_SHADER_STORAGE_BUFFER, GL_R32UI, GL_RED_INTEGER, GL_UNSIGNED_INT, nullptr);
    const glm::mat4 viewProjection = m_view.projection * m_view.view;
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    gl.glBindVertexArray(m_vertexArray);
    for (std::size_t i = 0; i < straddling.size(); ++i) {
        const std::size_t line = straddling[i];
        gl.glUniformMatrix4fv(m_model, 1, GL_FALSE, glm::value_ptr(m_matrices[line]));
        gl.glUniform1ui(m_number, static_cast<GLuint>(i));
        gl.glDrawArrays(GL_LINE_STRIP, static_cast<GLint>(line) * LineSet::VerticesPerLine,
                        LineSet::VerticesPerLine);
    }
    std::vector<std::uint32_t> bits(straddling.size() / 32 + 1);
    gl.glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
    gl.glGetBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, static_cast<GLsizeiptr>(bits.size() * 4), bits.data());
    std::vector<std::uint32_t> found;
    for (std::size_t i = 0; i < straddling.size(); ++i)
        if ((bits[i / 32] >> (i % 32) & 1u) != 0)
            found.push_back(static_cast<std::uint32_t>(straddling[i] + 1));
    return found;
}
