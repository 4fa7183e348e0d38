#include <benchmarks/plain/PlainLines.h>

#include <benchmarks/plain/ItemSources.h>

namespace {

const char* const thinVertex = R"(#version 430 core
layout(location = 0) in vec3 position;
)" PLAIN_ITEM_UNIFORMS R"(
flat out vec4 shownColor;
flat out uvec2 shownId;
void main()
{
    gl_Position = viewProjection * (model * vec4(position, 1.0));
    gl_PointSize = width;
    shownColor = flags == 1 ? chosenColor : color;
    shownId = id;
})";

const char* const wideVertex = R"(#version 430 core
layout(location = 0) in vec3 position;
)" PLAIN_ITEM_UNIFORMS R"(
flat out vec4 itemColor;
flat out uvec2 itemId;
flat out float itemWidth;
void main()
{
    gl_Position = viewProjection * (model * vec4(position, 1.0));
    itemColor = flags == 1 ? chosenColor : color;
    itemId = id;
    itemWidth = width;
})";

const char* const hexagonStage = R"(#version 430 core
layout(lines) in;
layout(triangle_strip, max_vertices = 6) out;
flat in vec4 itemColor[];
flat in uvec2 itemId[];
flat in float itemWidth[];
flat out vec4 shownColor;
flat out uvec2 shownId;
uniform vec2 pixels; // half of the picture's size

void corner(vec4 end, vec2 shift)
{
    gl_Position = vec4(end.xy + shift / pixels, end.zw);
    shownColor = itemColor[0];
    shownId = itemId[0];
    EmitVertex();
}

void main()
{
    vec4 a = gl_in[0].gl_Position, b = gl_in[1].gl_Position;
    if (a.w <= 0.0 || b.w <= 0.0) return;
    a /= a.w;
    b /= b.w;
    vec2 along = (b.xy - a.xy) * pixels;
    float size = length(along);
    along = (size < 1.0 ? vec2(0.0, -1.0) : along / size) * (0.5 * itemWidth[0]);
    vec2 across = vec2(-along.y, along.x);
    corner(a, -along);
    corner(a, across);
    corner(a, -across);
    corner(b, across);
    corner(b, -across);
    corner(b, along);
    EndPrimitive();
})";

const char* const quadVertex = R"(#version 430 core
layout(location = 0) in vec3 start;
layout(location = 1) in vec3 end;
)" PLAIN_ITEM_UNIFORMS R"(
uniform vec2 pixels;
flat out vec4 shownColor;
flat out uvec2 shownId;
const vec3 corners[6] = vec3[](vec3(0, -1, 0), vec3(0, 0, 1), vec3(0, 0, -1), vec3(1, 0, 1), vec3(1, 0, -1), vec3(1, 1, 0));
void main()
{
    shownColor = flags == 1 ? chosenColor : color;
    shownId = id;
    mat4 whole = viewProjection * model;
    vec4 a = whole * vec4(start, 1.0), b = whole * vec4(end, 1.0);
    if (a.w <= 0.0 || b.w <= 0.0) {
        gl_Position = vec4(0.0, 0.0, 2.0, 1.0); // out of view
        return;
    }
    a /= a.w;
    b /= b.w;
    vec2 along = (b.xy - a.xy) * pixels;
    float size = length(along);
    along = (size < 1.0 ? vec2(0.0, -1.0) : along / size) * (0.5 * width);
    vec2 across = vec2(-along.y, along.x);
    vec3 corner = corners[gl_VertexID];
    vec4 place = corner.x == 0.0 ? a : b;
    gl_Position = vec4(place.xy + (corner.y * along + corner.z * across) / pixels, place.zw);
})";

const char* const fragment = R"(#version 430 core
flat in vec4 shownColor;
flat in uvec2 shownId;
)" PLAIN_SHOW R"(
void main() { show(shownColor, shownId); })";

GLuint makeProgram(PlainContext& context, PlainLines::Technique technique)
{
    switch (technique) {
    case PlainLines::Thin:
        return context.program({{GL_VERTEX_SHADER, thinVertex}, {GL_FRAGMENT_SHADER, fragment}});
    case PlainLines::Stage:
        return context.program({{GL_VERTEX_SHADER, wideVertex},
                                {GL_GEOMETRY_SHADER, hexagonStage},
                                {GL_FRAGMENT_SHADER, fragment}});
    default:
        return context.program({{GL_VERTEX_SHADER, quadVertex}, {GL_FRAGMENT_SHADER, fragment}});
    }
}

} // namespace

PlainLines::PlainLines(PlainContext& context, const View& view, Technique technique, float width)
    : m_context(context)
    , m_view(view)
    , m_technique(technique)
    , m_width(width)
    , m_program(makeProgram(context, technique))
    , m_passUniforms(context.gl(), m_program)
    , m_uniforms(context.gl(), m_program)
{
    context.gl().glGenVertexArrays(1, &m_vertexArray);
}

PlainLines::~PlainLines()
{
    m_context.makeCurrent();
    clear();
    m_context.gl().glDeleteVertexArrays(1, &m_vertexArray);
    m_context.gl().glDeleteProgram(m_program);
}

void PlainLines::clear()
{
    m_items = {};
    m_spheres = {};
    m_indices = {};
    m_context.gl().glDeleteBuffers(1, &m_buffer);
    m_buffer = 0;
}

void PlainLines::load(const LineSet& set)
{
    clear();
    m_items.reserve(set.lines.size());
    m_spheres.reserve(set.lines.size());
    m_indices.reserve(set.lines.size());
    for (std::size_t i = 0; i < set.lines.size(); ++i) {
        const auto id = static_cast<std::uint32_t>(i + 1);
        const LineSet::Line& line = set.lines[i];
        m_items.push_back({line.matrix, plainColor(line.color), {id, 0u}, 0, m_width});
        m_spheres.push_back(sphereOf(line.matrix, set.verticesOf(i), LineSet::VerticesPerLine));
        m_indices.emplace(id, i);
    }
    PlainContext::Functions& gl = m_context.gl();
    gl.glBindVertexArray(m_vertexArray);
    m_buffer = m_context.buffer(GL_ARRAY_BUFFER, set.vertices);
    for (GLuint end = 0; end < (m_technique == Quads ? 2u : 1u); ++end) {
        gl.glEnableVertexAttribArray(end);
        gl.glVertexAttribPointer(end, 3, GL_FLOAT, GL_FALSE, sizeof(glm::vec3),
                                 reinterpret_cast<const void*>(end * sizeof(glm::vec3)));
        if (m_technique == Quads) gl.glVertexAttribDivisor(end, 1);
    }
}

void PlainLines::edit(std::uint32_t id, const QColor& color, const std::vector<glm::vec3>& vertices)
{
    constexpr std::size_t bytes = LineSet::VerticesPerLine * sizeof(glm::vec3);
    const std::size_t index = m_indices.at(id);
    m_items[index].color = plainColor(color);
    m_spheres[index] = sphereOf(m_items[index].matrix, vertices.data(), LineSet::VerticesPerLine);
    m_context.gl().glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    m_context.gl().glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>(index * bytes), bytes,
                                   vertices.data());
}

void PlainLines::beginPass()
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glUseProgram(m_program);
    const glm::mat4 viewProjection = m_view.projection * m_view.view;
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    gl.glUniform2f(m_passUniforms.pixels, 0.5f * static_cast<float>(m_view.size.width()),
                   0.5f * static_cast<float>(m_view.size.height()));
    gl.glUniform4f(m_passUniforms.chosenColor, 1.0f, 1.0f, 0.0f, 1.0f);
    gl.glBindVertexArray(m_vertexArray);
}

void PlainLines::drawLine(std::size_t line)
{
    constexpr int count = LineSet::VerticesPerLine;
    PlainContext::Functions& gl = m_context.gl();
    m_uniforms.set(m_items[line]);
    if (m_technique == Quads)
        gl.glDrawArraysInstancedBaseInstance(GL_TRIANGLE_STRIP, 0, 6, count - 1,
                                             static_cast<GLuint>(line) * count);
    else
        gl.glDrawArrays(GL_LINE_STRIP, static_cast<GLint>(line) * count, count);
}

void PlainLines::draw()
{
    beginPass();
    for (std::size_t i = 0; i < m_items.size(); ++i)
        drawLine(i);
}

void PlainLines::drawVisible()
{
    const auto planes = sidePlanes(m_view.projection * m_view.view, {-1.0f, -1.0f}, {1.0f, 1.0f});
    beginPass();
    for (std::size_t i = 0; i < m_items.size(); ++i)
        if (leastDistance(m_spheres[i], planes) >= -m_spheres[i].radius) drawLine(i);
}
