#include "GlyphsTest.h"

#include <Viewer3dModule/drawers/FontGlyphTextureFactory.h>

#include <QtCore/QElapsedTimer>
#include <QtGui/QFont>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <random>

// Very many labels, beside a plain OpenGL program that draws the same quads. The environment variable
// V3D_TEST_LABELS asks for another number of labels, of 20 letters each; the times are printed, not judged.
namespace {

const char* const plainVertexStage = R"(#version 430 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec2 offset;
out vec2 place;
uniform mat4 view_projection;
void main() { gl_Position = view_projection * vec4(position, 1.0); place = offset; })";

const char* const plainGeometryStage = R"(#version 430 core
layout(points) in;
layout(triangle_strip, max_vertices = 4) out;
in vec2 place[];
out vec2 at;
uniform sampler2D glyph;
uniform vec2 picture;
void main() {
    vec4 clip = gl_in[0].gl_Position;
    vec2 pixel = floor((clip.xy / clip.w * vec2(0.5, -0.5) + 0.5) * picture + 0.484375);
    pixel += vec2(place[0].x, -place[0].y);
    vec2 size = vec2(textureSize(glyph, 0));
    for (int i = 0; i < 4; ++i) {
        at = vec2(i & 1, 1 - (i >> 1));
        vec2 corner = pixel + vec2(size.x * at.x, size.y * (at.y - 1.0));
        gl_Position = vec4(corner / picture * vec2(2.0, -2.0) + vec2(-1.0, 1.0), clip.z / clip.w, 1.0);
        EmitVertex();
    }
    EndPrimitive();
})";

const char* const plainFragmentStage = R"(#version 430 core
in vec2 at;
out vec4 result;
uniform sampler2D glyph;
void main() {
    float alpha = texture(glyph, at).a;
    if (alpha == 0.0) discard;
    result = vec4(1.0, 1.0, 1.0, alpha);
})";

/// The same glyphs, sorted once and drawn as they are, without names, flags or modes.
class PlainGlyphs
{
public:
    struct Vertex
    {
        glm::vec3 position;
        glm::vec2 offset;
    };

    PlainGlyphs(OpenGLFunctions& gl, const std::vector<std::unique_ptr<LabelledItem>>& items,
                const QSize& picture)
        : m_gl(gl)
    {
        std::map<const IconTexture*, std::vector<Vertex>> sorted;
        for (const auto& item : items)
            for (const auto& [offset, texture] : item->glyphs)
                sorted[texture.get()].push_back({item->anchor, offset});
        std::vector<Vertex> vertices;
        for (const auto& [texture, own] : sorted) {
            m_runs.push_back({texture->getTextureId(), GLint(vertices.size()), GLsizei(own.size())});
            vertices.insert(vertices.end(), own.begin(), own.end());
        }
        gl.glGenVertexArrays(1, &m_vertexArray);
        gl.glBindVertexArray(m_vertexArray);
        gl.glGenBuffers(1, &m_buffer);
        gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
        gl.glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(Vertex)), vertices.data(),
                        GL_STATIC_DRAW);
        gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(Vertex), nullptr);
        gl.glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                 reinterpret_cast<const void*>(sizeof(glm::vec3)));
        gl.glEnableVertexAttribArray(0);
        gl.glEnableVertexAttribArray(1);
        gl.glBindVertexArray(0);
        m_program.addShaderFromSourceCode(QOpenGLShader::Vertex, plainVertexStage);
        m_program.addShaderFromSourceCode(QOpenGLShader::Geometry, plainGeometryStage);
        m_program.addShaderFromSourceCode(QOpenGLShader::Fragment, plainFragmentStage);
        EXPECT_TRUE(m_program.link()) << qPrintable(m_program.log());
        m_program.bind();
        m_program.setUniformValue("picture", QSizeF(picture));
        m_program.setUniformValue("view_projection", QMatrix4x4());
        m_program.release();
    }
    ~PlainGlyphs()
    {
        m_gl.glDeleteBuffers(1, &m_buffer);
        m_gl.glDeleteVertexArrays(1, &m_vertexArray);
    }
    PlainGlyphs(const PlainGlyphs&) = delete;
    PlainGlyphs& operator=(const PlainGlyphs&) = delete;

    void draw()
    {
        m_program.bind();
        m_gl.glBindVertexArray(m_vertexArray);
        for (const Run& run : m_runs) {
            m_gl.glBindTexture(GL_TEXTURE_2D, run.texture);
            m_gl.glDrawArrays(GL_POINTS, run.first, run.count);
        }
        m_gl.glBindTexture(GL_TEXTURE_2D, 0);
        m_gl.glBindVertexArray(0);
        m_program.release();
    }

private:
    struct Run
    {
        unsigned int texture;
        GLint first;
        GLsizei count;
    };
    OpenGLFunctions& m_gl;
    QOpenGLShaderProgram m_program;
    std::vector<Run> m_runs;
    unsigned int m_vertexArray = 0;
    unsigned int m_buffer = 0;
};

class ManyGlyphsTest : public GlyphsTest
{
protected:
    static constexpr std::size_t Letters = 20;
    static constexpr int Frames = 9;
    const QSize picture{1200, 800};

    static std::size_t labelCount()
    {
        bool isNumber = false;
        const int count = qEnvironmentVariableIntValue("V3D_TEST_LABELS", &isNumber);
        return isNumber && count > 0 ? std::size_t(count) : 300;
    }
    MultiGlyphItem3dDrawer::GlyphList letters(const QString& text) const
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(12);
        font.setHintingPreference(QFont::PreferFullHinting);
        MultiGlyphItem3dDrawer::GlyphList list;
        for (auto& [place, texture] : FontGlyphTextureFactory::get(text, font, 1))
            list.emplace_back(glm::vec2(float(place.x()), float(-place.y())), texture);
        return list;
    }
    /// No f, which is one glyph together with some letters.
    QString anyText()
    {
        static const QString alphabet =
            QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdeghijklmnopqrstuvwxyz0123456789");
        QString text;
        while (std::size_t(text.size()) < Letters)
            text.append(alphabet[int(random() % unsigned(alphabet.size()))]);
        return text;
    }
    /// Milliseconds of a frame.
    template <class Draw>
    double frameTime(RenderTarget& target, const Draw& draw)
    {
        target.clear(QColor(0, 0, 0));
        gl->glFinish();
        QElapsedTimer timer;
        timer.start();
        draw();
        gl->glFinish();
        return double(timer.nsecsElapsed()) * 1e-6;
    }

    std::mt19937 random{5};
};

TEST_F(ManyGlyphsTest, LookAsAPlainProgramDrawsThemAndChangeOneByOne)
{
    const std::size_t count = labelCount(), glyphs = count * Letters;
    QElapsedTimer layout;
    layout.start();
    for (std::size_t i = 0; i < count; ++i)
        add(LONGID(i) + 1, letters(anyText()),
            {float(random() % 2000) * 1e-3f - 1.0f, float(random() % 2000) * 1e-3f - 1.0f,
             float(i) / float(count)});
    ASSERT_EQ(drawer->getGlyphs().size(), glyphs);
    drawer->setColor(Qt::white);
    const double layoutTime = double(layout.nsecsElapsed()) * 1e-6;

    RenderTarget target(*gl, picture);
    target.bind();
    gl->glDisable(GL_DEPTH_TEST); // no picture depends on the order then: all is white
    const PaintContext context = paintContext(picture.width(), picture.height());
    target.clear(QColor(0, 0, 0));
    drawer->draw(context, {});
    const QImage shown = target.image().convertToFormat(QImage::Format_RGB32);
    PlainGlyphs plain(*gl, items, picture);
    target.clear(QColor(0, 0, 0));
    plain.draw();
    // of letters that lie one over the other the sums are rounded in another order
    checkImage("many_glyphs", shown, target.image().convertToFormat(QImage::Format_RGB32), {6, 0});

    // in turn and the shortest ones, for what else the machine does slows both
    double own = std::numeric_limits<double>::max(), other = own;
    for (int i = 0; i < Frames; ++i) {
        own = std::min(own, frameTime(target, [&] { drawer->draw(context, {}); }));
        other = std::min(other, frameTime(target, [&] { plain.draw(); }));
    }

    drawer->layouts = 0;
    LabelledItem& renamed = *items[count / 2];
    const auto name = letters(anyText());
    QElapsedTimer timer;
    timer.start();
    GlCalls calls(*gl);
    relabel(renamed, name);
    drawer->draw(context, {});
    gl->glFinish();
    const double rename = double(timer.nsecsElapsed()) * 1e-6;
    EXPECT_EQ(drawer->layouts, 1);
    EXPECT_EQ(calls.uploadedBytes(), (GlyphBytes + 8 + 4 + 4) * glyphs);
    EXPECT_EQ(calls.textureUploads, 0);
    gl->glEnable(GL_DEPTH_TEST);
    std::printf("%zu labels, %zu glyphs: laid out in %.1f ms, frame %.2f ms, plain program %.2f ms, "
                "ratio %.2f; frame after a new name %.2f ms\n",
                count, glyphs, layoutTime, own, other, own / other, rename);
}

} // namespace
