#include <benchmarks/plain/PlainLabels.h>

#include <benchmarks/plain/ItemSources.h>

#include <algorithm>
#include <cstddef>

namespace {

const char* const vertex = R"(#version 430 core
layout(location = 0) in vec3 anchor;
layout(location = 1) in vec2 offset;
layout(location = 2) in vec4 window; // of the texture: left, bottom, width, height, texels
layout(location = 3) in int flags;
layout(location = 4) in uvec2 id;
uniform mat4 viewProjection;
uniform vec2 pixels; // half of the picture's size
uniform vec4 color;
uniform vec4 chosenColor;
out vec2 texel;
flat out vec4 shownColor;
flat out uvec2 shownId;
void main()
{
    shownColor = flags == 1 ? chosenColor : color;
    shownId = id;
    vec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1) * window.zw;
    texel = window.xy + corner;
    vec4 clip = viewProjection * vec4(anchor, 1.0);
    vec3 ndc = clip.xyz / clip.w;
    vec2 fromTop = vec2(1.0 + ndc.x, 1.0 - ndc.y) * pixels;
    fromTop = floor(fromTop + (0.5 - 1.0 / 64.0)); // letters stand on whole pixels
    vec2 place = vec2(fromTop.x / pixels.x - 1.0, 1.0 - fromTop.y / pixels.y);
    gl_Position = vec4(place + (offset + corner) / pixels, ndc.z, 1.0);
})";

const char* const fragment = R"(#version 430 core
in vec2 texel;
flat in vec4 shownColor;
flat in uvec2 shownId;
uniform sampler2D letters;
)" PLAIN_SHOW R"(
void main()
{
    float alpha = shownColor.a * texelFetch(letters, ivec2(texel), 0).r;
    if (alpha == 0.0) discard;
    show(vec4(shownColor.rgb, alpha), shownId);
})";

struct Record
{
    glm::vec3 anchor;
    glm::vec2 offset;
    glm::vec4 window;
    std::int32_t flags;
    glm::uvec2 id;
};

} // namespace

PlainLabels::PlainLabels(PlainContext& context, const std::vector<Glyph>& glyphs,
                         const std::vector<QImage>& images, const View& view)
    : m_context(context)
    , m_view(view)
    , m_count(static_cast<GLsizei>(glyphs.size()))
    , m_program(context.program({{GL_VERTEX_SHADER, vertex}, {GL_FRAGMENT_SHADER, fragment}}))
    , m_passUniforms(context.gl(), m_program)
{
    const std::vector<QRect> windows = uploadImages(images);
    std::vector<Record> records;
    records.reserve(glyphs.size());
    for (const Glyph& glyph : glyphs) {
        const QRect& window = windows[static_cast<std::size_t>(glyph.image)];
        records.push_back({glyph.anchor,
                           glyph.offset,
                           {window.x(), window.y(), window.width(), window.height()},
                           0,
                           {glyph.id, 0u}});
    }
    PlainContext::Functions& gl = context.gl();
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    context.buffer(GL_ARRAY_BUFFER, records);
    const auto at = [](std::size_t offset) { return reinterpret_cast<const void*>(offset); };
    gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(Record), at(offsetof(Record, anchor)));
    gl.glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, sizeof(Record), at(offsetof(Record, offset)));
    gl.glVertexAttribPointer(2, 4, GL_FLOAT, GL_FALSE, sizeof(Record), at(offsetof(Record, window)));
    gl.glVertexAttribIPointer(3, 1, GL_INT, sizeof(Record), at(offsetof(Record, flags)));
    gl.glVertexAttribIPointer(4, 2, GL_UNSIGNED_INT, sizeof(Record), at(offsetof(Record, id)));
    for (GLuint i = 0; i < 5; ++i) {
        gl.glEnableVertexAttribArray(i);
        gl.glVertexAttribDivisor(i, 1);
    }
}

// Side by side, the lowest row first, of which the alpha is kept.
std::vector<QRect> PlainLabels::uploadImages(const std::vector<QImage>& images)
{
    int width = 0, height = 0;
    for (const QImage& image : images) {
        width += image.width();
        height = std::max(height, image.height());
    }
    std::vector<QRect> windows;
    std::vector<std::uint8_t> alphas(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    int left = 0;
    for (const QImage& image : images) {
        windows.emplace_back(left, 0, image.width(), image.height());
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                alphas[static_cast<std::size_t>((image.height() - 1 - y) * width + left + x)] =
                    static_cast<std::uint8_t>(qAlpha(image.pixel(x, y)));
        left += image.width();
    }
    PlainContext::Functions& gl = m_context.gl();
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    gl.glGenTextures(1, &m_texture);
    gl.glBindTexture(GL_TEXTURE_2D, m_texture);
    gl.glTexStorage2D(GL_TEXTURE_2D, 1, GL_R8, width, height);
    gl.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RED, GL_UNSIGNED_BYTE, alphas.data());
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return windows;
}

void PlainLabels::draw()
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glUseProgram(m_program);
    const glm::mat4 viewProjection = m_view.projection * m_view.view;
    gl.glUniformMatrix4fv(m_passUniforms.viewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    gl.glUniform2f(m_passUniforms.pixels, 0.5f * static_cast<float>(m_view.size.width()),
                   0.5f * static_cast<float>(m_view.size.height()));
    gl.glUniform4f(m_passUniforms.color, 1.0f, 1.0f, 1.0f, 1.0f);
    gl.glUniform4f(m_passUniforms.chosenColor, 1.0f, 1.0f, 0.0f, 1.0f);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_2D, m_texture);
    gl.glBindVertexArray(m_vertexArray);
    gl.glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, m_count);
}
