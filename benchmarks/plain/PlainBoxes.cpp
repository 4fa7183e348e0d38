#include <benchmarks/plain/PlainBoxes.h>

#include <benchmarks/plain/ItemSources.h>
#include <benchmarks/plain/LitSources.h>

namespace {

const char* const vertex = R"(#version 430 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
)" PLAIN_ITEM_UNIFORMS R"(
uniform mat4 view;
uniform mat4 projection;
out vec3 eyeNormal;
out vec3 eyePosition;
flat out vec4 shownColor;
flat out uvec2 shownId;
void main()
{
    vec4 eye = view * (model * vec4(position, 1.0));
    gl_Position = projection * eye;
    gl_PointSize = width;
    eyePosition = eye.xyz;
    eyeNormal = mat3(view) * (mat3(model) * normal); // no matrix here scales
    shownColor = flags == 1 ? chosenColor : color;
    shownId = id;
})";

const char* const fragment = R"(#version 430 core
flat in vec4 shownColor;
flat in uvec2 shownId;
)" PLAIN_LIGHT PLAIN_SHOW R"(
void main() { show(vec4(lit(shownColor.rgb), shownColor.a), shownId); })";

struct Vertex
{
    glm::vec3 position, normal;
};

} // namespace

PlainBoxes::PlainBoxes(PlainContext& context, const BoxSet& set, const View& view, const glm::vec3& light)
    : m_context(context)
    , m_view(view)
    , m_light(light)
    , m_program(context.program({{GL_VERTEX_SHADER, vertex}, {GL_FRAGMENT_SHADER, fragment}}))
    , m_passUniforms(context.gl(), m_program)
    , m_uniforms(context.gl(), m_program)
{
    std::vector<Vertex> vertices;
    vertices.reserve(set.boxes.size() * BoxSet::VertexCount);
    m_items.reserve(set.boxes.size());
    const auto normals = BoxSet::normals();
    for (const BoxSet::Box& box : set.boxes) {
        const auto id = static_cast<std::uint32_t>(m_items.size() + 1);
        m_items.push_back({box.matrix, plainColor(box.color), {id, 0u}, 0, 1.0f});
        const auto positions = BoxSet::positionsOf(box);
        for (std::size_t i = 0; i < BoxSet::VertexCount; ++i)
            vertices.push_back({positions[i], normals[i]});
    }
    PlainContext::Functions& gl = context.gl();
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, vertices);
    for (GLuint i = 0; i < 2; ++i) {
        gl.glEnableVertexAttribArray(i);
        gl.glVertexAttribPointer(i, 3, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                 reinterpret_cast<const void*>(i * sizeof(glm::vec3)));
    }
    context.buffer(GL_ELEMENT_ARRAY_BUFFER, BoxSet::indices());
}

void PlainBoxes::draw()
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glUseProgram(m_program);
    gl.glUniformMatrix4fv(m_passUniforms.view, 1, GL_FALSE, glm::value_ptr(m_view.view));
    gl.glUniformMatrix4fv(m_passUniforms.projection, 1, GL_FALSE, glm::value_ptr(m_view.projection));
    gl.glUniform3fv(m_passUniforms.light, 1, glm::value_ptr(m_light));
    gl.glUniform4f(m_passUniforms.chosenColor, 1.0f, 1.0f, 0.0f, 1.0f);
    // Surfaces lie a step back, so that lines on them show.
    gl.glEnable(GL_POLYGON_OFFSET_FILL);
    gl.glPolygonOffset(1.0f, 1.0f);
    gl.glBindVertexArray(m_vertexArray);
    GLint first = 0;
    for (const PlainItem& item : m_items) {
        m_uniforms.set(item);
        gl.glDrawElementsBaseVertex(GL_TRIANGLES, BoxSet::IndexCount, GL_UNSIGNED_INT, nullptr, first);
        first += BoxSet::VertexCount;
    }
}
