#include "DepthMap.h"
#include "SolidsTest.h"

#include <Viewer3dModule/camera/CentralProjection.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QSizeF>
#include <QtGui/QOffscreenSurface>

#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

constexpr QSize mapSize(1280, 720);
constexpr double nearDistance = 1.0, farDistance = 100.0;

/// A wavy ground of a million triangles, 20 by 20 units round the origin.
MeshData ground()
{
    constexpr std::uint32_t columns = 1000, rows = 500;
    MeshData data;
    for (std::uint32_t row = 0; row <= rows; ++row)
        for (std::uint32_t column = 0; column <= columns; ++column) {
            const float x = 20.0f * (static_cast<float>(column) / columns - 0.5f);
            const float y = 20.0f * (static_cast<float>(row) / rows - 0.5f);
            data.positions.emplace_back(x, y, 0.5f * std::sin(2.0f * x) * std::cos(1.5f * y));
        }
    for (std::uint32_t row = 0; row < rows; ++row)
        for (std::uint32_t column = 0; column < columns; ++column) {
            const std::uint32_t a = row * (columns + 1) + column, b = a + 1, c = b + columns + 1, d = c - 1;
            data.indices.insert(data.indices.end(), {a, b, c, a, c, d});
        }
    MeshData::Part part;
    part.indexCount = static_cast<std::uint32_t>(data.indices.size());
    data.parts.push_back(part);
    return data;
}

class MeshItem : public Drawable3dItem
{
public:
    explicit MeshItem(MeshData data)
        : m_node(std::move(data))
    {
        setSolid(m_node.isSolid());
    }
    using Drawable3dItem::setDrawer;

protected:
    void draw(const PaintContext& context) override { m_node.draw(context, 1); }

private:
    MeshNode3d m_node;
};

/// The same by OpenGL alone: the smallest program that draws the mesh, its depths read back and made
/// distances by the textbook's formula.
class PlainDepth
{
public:
    explicit PlainDepth(const MeshData& mesh);
    std::vector<float> distances(const glm::dmat4& view, const glm::dmat4& projection);

private:
    void makeProgram();
    void makeTarget();

    OpenGLFunctions* m_gl = nullptr;
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    QOpenGLShaderProgram m_program;
    GLuint m_vertexArray = 0, m_framebuffer = 0, m_buffers[2] = {0, 0}, m_textures[2] = {0, 0};
    GLsizei m_indexCount;
};

PlainDepth::PlainDepth(const MeshData& mesh)
    : m_indexCount(static_cast<GLsizei>(mesh.indices.size()))
{
    QOpenGLContext* share = QOpenGLContext::globalShareContext();
    m_surface.setFormat(share->format());
    m_surface.create();
    m_context.setFormat(share->format());
    m_context.create();
    m_context.makeCurrent(&m_surface);
    m_gl = currentGLFunctions();
    m_gl->glGenVertexArrays(1, &m_vertexArray);
    m_gl->glBindVertexArray(m_vertexArray);
    m_gl->glGenBuffers(2, m_buffers);
    m_gl->glBindBuffer(GL_ARRAY_BUFFER, m_buffers[0]);
    m_gl->glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(mesh.positions.size() * sizeof(glm::vec3)),
                       mesh.positions.data(), GL_STATIC_DRAW);
    m_gl->glEnableVertexAttribArray(0);
    m_gl->glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    m_gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[1]);
    m_gl->glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                       static_cast<GLsizeiptr>(mesh.indices.size() * sizeof(std::uint32_t)),
                       mesh.indices.data(), GL_STATIC_DRAW);
    m_gl->glEnable(GL_DEPTH_TEST);
    makeProgram();
    makeTarget();
}

void PlainDepth::makeProgram()
{
    m_program.addShaderFromSourceCode(QOpenGLShader::Vertex, R"(#version 430 core
layout(location = 0) in vec3 place;
uniform mat4 whole;
void main() { gl_Position = whole * vec4(place, 1.0); })");
    m_program.addShaderFromSourceCode(QOpenGLShader::Fragment, R"(#version 430 core
layout(location = 0) out vec4 color;
void main() { color = vec4(1.0); })");
    ASSERT_TRUE(m_program.link());
}

void PlainDepth::makeTarget()
{
    m_gl->glGenTextures(2, m_textures);
    const GLenum formats[] = {GL_RGB, GL_DEPTH_COMPONENT}, types[] = {GL_UNSIGNED_BYTE, GL_FLOAT},
                 places[] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
    m_gl->glGenFramebuffers(1, &m_framebuffer);
    m_gl->glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    for (int i = 0; i < 2; ++i) {
        m_gl->glBindTexture(GL_TEXTURE_2D, m_textures[i]);
        m_gl->glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(formats[i]), mapSize.width(),
                           mapSize.height(), 0, formats[i], types[i], nullptr);
        m_gl->glFramebufferTexture2D(GL_FRAMEBUFFER, places[i], GL_TEXTURE_2D, m_textures[i], 0);
    }
}

std::vector<float> PlainDepth::distances(const glm::dmat4& view, const glm::dmat4& projection)
{
    m_context.makeCurrent(&m_surface);
    m_gl->glViewport(0, 0, mapSize.width(), mapSize.height());
    m_gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    m_program.bind();
    const glm::mat4 whole(projection * view);
    m_gl->glUniformMatrix4fv(m_program.uniformLocation("whole"), 1, GL_FALSE, glm::value_ptr(whole));
    m_gl->glDrawElements(GL_TRIANGLES, m_indexCount, GL_UNSIGNED_INT, nullptr);
    std::vector<float> values(static_cast<std::size_t>(mapSize.width()) *
                              static_cast<std::size_t>(mapSize.height()));
    m_gl->glBindTexture(GL_TEXTURE_2D, m_textures[1]);
    m_gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, values.data());
    constexpr double product = farDistance * nearDistance, range = farDistance - nearDistance;
    for (float& value : values)
        value = value == 1.0f
                    ? std::numeric_limits<float>::quiet_NaN()
                    : static_cast<float>(product / (farDistance - static_cast<double>(value) * range));
    return values;
}

/// Milliseconds of the clock and of all processors together, of several runs.
class Times
{
public:
    void measure(const std::function<void()>& run)
    {
        QElapsedTimer timer;
        const std::clock_t before = std::clock();
        timer.start();
        run();
        m_wall.push_back(static_cast<double>(timer.nsecsElapsed()) * 1e-6);
        m_work.push_back(static_cast<double>(std::clock() - before) * 1e3 / CLOCKS_PER_SEC);
    }
    double wall() const { return median(m_wall); }
    double work() const { return median(m_work); }
    double best() const { return *std::min_element(m_wall.begin(), m_wall.end()); }

private:
    static double median(std::vector<double> values)
    {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    }
    std::vector<double> m_wall;
    std::vector<double> m_work;
};

void print(const char* what, const Times& map, const Times& plain)
{
    std::printf(
        "%s: map %.1f ms, OpenGL alone %.1f ms (medians); ratio %.2f, of the best %.2f, of the work of "
        "all processors %.2f\n",
        what, map.wall(), plain.wall(), map.wall() / plain.wall(), map.best() / plain.best(),
        map.work() / plain.work());
}

/// Pixels whose distances differ by more than a centimetre, or where only one has any.
int differences(const QImage& map, const std::vector<float>& distances)
{
    int different = 0;
    for (int y = 0; y < mapSize.height(); ++y)
        for (int x = 0; x < mapSize.width(); ++x) {
            const float mine = distanceAt(map, x, y);
            const float other =
                distances[static_cast<std::size_t>((mapSize.height() - 1 - y) * mapSize.width() + x)];
            different += std::isnan(mine) != std::isnan(other) || std::abs(mine - other) > 0.01f;
        }
    return different;
}

/// Measured by hand: prints the times of a map and of the same by OpenGL alone, taken in turn, and compares
/// what they make. Left out: uploading the mesh and building programs.
class DepthMapSpeedTest : public SceneTest, public ::testing::WithParamInterface<int>
{
};

TEST_P(DepthMapSpeedTest, DISABLED_AMillionTriangles)
{
    const MeshData data = ground();
    scene->makeCurrent();
    MeshItem item(data);
    item.setDrawer(scene->getDefaultDrawer(GetParam()));
    const glm::dmat4 view = glm::lookAt(glm::dvec3(4, -16, 12), glm::dvec3(0, 0, 0), glm::dvec3(0, 0, 1));
    const glm::dmat4 projection =
        CentralProjection().calcProjectionMatrix(QSizeF(mapSize), farDistance, nearDistance);
    SceneDepthMapGenerator generator(mapSize);
    PlainDepth plain(data);

    QImage map = generator.generate({&item}, view, projection);
    std::vector<float> distances = plain.distances(view, projection);
    Times mapTimes, plainTimes;
    for (int i = 0; i < 31; ++i) {
        mapTimes.measure([&] { map = generator.generate({&item}, view, projection); });
        plainTimes.measure([&] { distances = plain.distances(view, projection); });
    }
    EXPECT_GT(coveredCount(map), mapSize.width() * mapSize.height() / 4);
    EXPECT_LT(differences(map, distances), 2000); // silhouettes
    std::printf("%s\n", reinterpret_cast<const char*>(currentGLFunctions()->glGetString(GL_RENDERER)));
    print(GetParam() == DrawerType::Mono ? "Mono drawer" : "Mesh drawer", mapTimes, plainTimes);
    scene->makeCurrent();
}

INSTANTIATE_TEST_SUITE_P(, DepthMapSpeedTest,
                         ::testing::Values(int(DrawerType::Mesh), int(DrawerType::Mono)));

} // namespace
