#include <benchmarks/plain/PlainMesh.h>

#include <benchmarks/plain/LitSources.h>

namespace {

const char* const vertex = R"(#version 430 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
uniform mat4 view;
uniform mat4 projection;
out vec3 eyeNormal;
out vec3 eyePosition;
void main()
{
    vec4 eye = view * vec4(position, 1.0);
    gl_Position = projection * eye;
    eyePosition = eye.xyz;
    eyeNormal = mat3(view) * normal;
})";

const char* const fragment = R"(#version 430 core
uniform vec3 color;
layout(location = 0) out vec4 result;
)" PLAIN_LIGHT R"(
void main() { result = vec4(lit(color), 1.0); })";

struct Vertex
{
    glm::vec3 position, normal;
};

} // namespace

PlainMesh::PlainMesh(PlainContext& context, const GroundMesh& mesh, const View& view, const glm::vec3& light,
                     const QColor& color)
    : m_context(context)
    , m_view(view)
    , m_light(light)
    , m_color(color)
    , m_indexCount(static_cast<GLsizei>(mesh.indices.size()))
    , m_program(context.program({{GL_VERTEX_SHADER, vertex}, {GL_FRAGMENT_SHADER, fragment}}))
    , m_passUniforms(context.gl(), m_program)
{
    std::vector<Vertex> vertices;
    vertices.reserve(mesh.positions.size());
    for (std::size_t i = 0; i < mesh.positions.size(); ++i)
        vertices.push_back({mesh.positions[i], mesh.normals[i]});
    PlainContext::Functions& gl = context.gl();
    gl.glDisable(GL_BLEND);
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, vertices);
    for (GLuint i = 0; i < 2; ++i) {
        gl.glEnableVertexAttribArray(i);
        gl.glVertexAttribPointer(i, 3, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                 reinterpret_cast<const void*>(i * sizeof(glm::vec3)));
    }
    context.buffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices);
}

void PlainMesh::draw()
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glUseProgram(m_program);
    gl.glUniformMatrix4fv(m_passUniforms.view, 1, GL_FALSE, glm::value_ptr(m_view.view));
    gl.glUniformMatrix4fv(m_passUniforms.projection, 1, GL_FALSE, glm::value_ptr(m_view.projection));
    gl.glUniform3fv(m_passUniforms.light, 1, glm::value_ptr(m_light));
    gl.glUniform3f(m_passUniforms.color, static_cast<float>(m_color.redF()),
                   static_cast<float>(m_color.greenF()), static_cast<float>(m_color.blueF()));
    gl.glBindVertexArray(m_vertexArray);
    gl.glDrawElements(GL_TRIANGLES, m_indexCount, GL_UNSIGNED_INT, nullptr);
}
