#include <benchmarks/plain/PlainAtOnce.h>

#include <benchmarks/plain/ItemSources.h>
#include <benchmarks/plain/LitSources.h>

namespace {

const char* const lineVertex = R"(#version 430 core
layout(location = 0) in vec3 position;
)" PLAIN_ITEM_RECORDS R"(
flat out vec4 shownColor;
flat out uvec2 shownId;
void main()
{
    gl_Position = viewProjection * (model * vec4(position, 1.0));
    gl_PointSize = width;
    shownColor = flags == 1 ? chosenColor : color;
    shownId = id;
})";

const char* const lineFragment = R"(#version 430 core
flat in vec4 shownColor;
flat in uvec2 shownId;
)" PLAIN_SHOW R"(
void main() { show(shownColor, shownId); })";

const char* const boxVertex = R"(#version 430 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
)" PLAIN_ITEM_RECORDS R"(
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

const char* const boxFragment = R"(#version 430 core
flat in vec4 shownColor;
flat in uvec2 shownId;
)" PLAIN_LIGHT PLAIN_SHOW R"(
void main() { show(vec4(lit(shownColor.rgb), shownColor.a), shownId); })";

PlainItem itemOf(const glm::mat4& matrix, const QColor& color, std::size_t index)
{
    return {matrix, plainColor(color), {static_cast<std::uint32_t>(index + 1), 0u}, 0, 1.0f};
}

void bindFloats(PlainContext& context, GLuint location, const std::vector<glm::vec3>& values)
{
    context.buffer(GL_ARRAY_BUFFER, values);
    context.gl().glEnableVertexAttribArray(location);
    context.gl().glVertexAttribPointer(location, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
}

GLuint boundVertexArray(PlainContext& context)
{
    GLuint name = 0;
    context.gl().glGenVertexArrays(1, &name);
    context.gl().glBindVertexArray(name);
    return name;
}

} // namespace

PlainAtOnce::PlainAtOnce(PlainContext& context, const LineSet& set, const View& view)
    : m_context(context)
    , m_view(view)
    , m_isBoxes(false)
    , m_program(context.program({{GL_VERTEX_SHADER, lineVertex}, {GL_FRAGMENT_SHADER, lineFragment}}))
    , m_passUniforms(context.gl(), m_program)
    , m_vertexArray(boundVertexArray(context))
{
    std::vector<PlainItem> items;
    std::vector<PlainRecords::ArraysCommand> commands;
    for (const LineSet::Line& line : set.lines) {
        const auto index = static_cast<GLuint>(items.size());
        commands.push_back({LineSet::VerticesPerLine, 1, index * LineSet::VerticesPerLine, index});
        items.push_back(itemOf(line.matrix, line.color, index));
    }
    bindFloats(context, 0, set.vertices);
    m_records.emplace(context, items);
    m_records->setCommands(commands);
}

PlainAtOnce::PlainAtOnce(PlainContext& context, const BoxSet& set, const View& view, const glm::vec3& light)
    : m_context(context)
    , m_view(view)
    , m_light(light)
    , m_isBoxes(true)
    , m_program(context.program({{GL_VERTEX_SHADER, boxVertex}, {GL_FRAGMENT_SHADER, boxFragment}}))
    , m_passUniforms(context.gl(), m_program)
    , m_vertexArray(boundVertexArray(context))
{
    std::vector<PlainItem> items;
    std::vector<PlainRecords::ElementsCommand> commands;
    std::vector<glm::vec3> positions, normals;
    for (const BoxSet::Box& box : set.boxes) {
        commands.push_back({BoxSet::IndexCount, 1, 0, static_cast<GLint>(positions.size()),
                            static_cast<GLuint>(items.size())});
        items.push_back(itemOf(box.matrix, box.color, items.size()));
        for (const glm::vec3& position : BoxSet::positionsOf(box))
            positions.push_back(position);
        for (const glm::vec3& normal : BoxSet::normals())
            normals.push_back(normal);
    }
    bindFloats(context, 0, positions);
    bindFloats(context, 1, normals);
    context.buffer(GL_ELEMENT_ARRAY_BUFFER, BoxSet::indices());
    m_records.emplace(context, items);
    m_records->setCommands(commands);
}

void PlainAtOnce::draw()
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glUseProgram(m_program);
    const glm::mat4 viewProjection = m_view.projection * m_view.view;
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    gl.glUniformMatrix4fv(m_passUniforms.view, 1, GL_FALSE, glm::value_ptr(m_view.view));
    gl.glUniformMatrix4fv(m_passUniforms.projection, 1, GL_FALSE, glm::value_ptr(m_view.projection));
    gl.glUniform3fv(m_passUniforms.light, 1, glm::value_ptr(m_light));
    gl.glUniform4f(m_passUniforms.chosenColor, 1.0f, 1.0f, 0.0f, 1.0f);
    gl.glBindVertexArray(m_vertexArray);
    if (!m_isBoxes) {
        m_records->drawArrays(GL_LINE_STRIP);
        return;
    }
    // Surfaces lie a step back, so that lines on them show.
    gl.glEnable(GL_POLYGON_OFFSET_FILL);
    gl.glPolygonOffset(1.0f, 1.0f);
    m_records->drawElements(GL_TRIANGLES);
}
