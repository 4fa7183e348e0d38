#include "../../support/GlObjects.h"
#include "../../support/SceneTest.h"
#include "../../support/VertexItem.h"

#include <viewer/EyeDomePass.h>

#include <QtCore/QFile>
#include <QtGui/QOpenGLFramebufferObject>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdio>

// The pass over frames of scenes, against a count in doubles over the depths of the frame.

namespace {

constexpr int PassWidth = 96;
constexpr int PassHeight = 64;
const QSize size(PassWidth, PassHeight);

/// The pixels of a frame buffer, lowest row first.
struct Frame
{
    std::vector<glm::u8vec4> colors;
    std::vector<float> depths;

    const glm::u8vec4& color(int x, int y) const
    {
        return colors[static_cast<std::size_t>(y * PassWidth + x)];
    }
    double frustumZ(int x, int y) const
    {
        const auto depth = static_cast<double>(depths[static_cast<std::size_t>(y * PassWidth + x)]);
        return 2.0 * (depth < 0.001 ? depth / 0.001 : (depth - 0.001) / 0.999) - 1.0;
    }
};

/// The share of the neighbours of a pixel that leave it lit: those within 5.5 pixels' heights of its point in
/// the camera's frame, but for nearer (or with positive shading further) ones that are not as close in space.
/// Nothing where single precision may count otherwise.
std::optional<double> litShare(const Frame& frame, const glm::dmat4& toEye, bool isPositive, int x, int y)
{
    const auto place = [&](int i, int j, double z) {
        const glm::dvec4 p =
            toEye * glm::dvec4((2.0 * i + 1.0) / PassWidth - 1.0, (2.0 * j + 1.0) / PassHeight - 1.0, z, 1.0);
        return glm::dvec3(p) / p.w;
    };
    const double z = frame.frustumZ(x, y);
    const glm::dvec3 centre = place(x, y, z);
    const double radius = 5.5 * glm::length(place(x, y + 1, z) - centre);
    int count = 0, lit = 0;
    for (int j = std::max(y - 5, 0); j <= std::min(y + 5, PassHeight - 1); ++j)
        for (int i = std::max(x - 5, 0); i <= std::min(x + 5, PassWidth - 1); ++i) {
            if (glm::length(glm::dvec2(place(i, j, z) - centre)) > radius) continue;
            ++count;
            const double other = frame.frustumZ(i, j);
            const double distance = glm::length(place(i, j, other) - centre);
            if (std::abs(distance - radius) < 1e-3 * radius) return {};
            const bool isBeyond = isPositive ? z < other : z > other;
            lit += !(isBeyond && distance > radius);
        }
    return static_cast<double>(lit) / count;
}

} // namespace

class EyeDomePassTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        m_projection = glm::perspective(0.8, double(PassWidth) / PassHeight, 1.0, 60.0);
        // a far wall, a near post before it, and a slope beside
        const auto add = [this](std::vector<glm::vec3> vertices, const QColor& color) {
            scene->addLocalItem(std::make_unique<VertexItem>(GL_TRIANGLES, std::move(vertices), color));
        };
        add(squareVertices(-9, -6, 9, 6, -22), QColor(200, 120, 40));
        add(squareVertices(-1, -3, 1, 6, -12), QColor(60, 160, 220));
        add({{3, -4, -21}, {5, -4, -8}, {4, 4, -20}}, QColor(90, 200, 90));
    }
    void makeTarget(int samples)
    {
        scene->makeCurrent();
        QOpenGLFramebufferObjectFormat format;
        format.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
        format.setSamples(samples);
        m_target = std::make_unique<QOpenGLFramebufferObject>(size, format);
        ASSERT_TRUE(m_target->bind());
    }
    void TearDown() override
    {
        scene->makeCurrent();
        m_target.reset();
        SceneTest::TearDown();
    }
    void draw()
    {
        m_target->bind();
        drawFrame(0);
    }
    /// Into the bound target, which the frame begins so many pixels from the left of.
    void drawFrame(int left)
    {
        gl->glViewport(left, 0, PassWidth, PassHeight);
        gl->glClearColor(0.5f, 0.25f, 0.125f, 0.5f);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        PaintContext context = paintContext(PassWidth, PassHeight);
        context.projection = glm::mat4(m_projection);
        scene->drawFrame(context, nullptr, {});
    }
    /// Draws a frame, and applies the pass to it.
    Frame shaded(EyeDomeShading shading)
    {
        draw();
        EyeDomePass(*scene).apply(shading, size, m_projection, scene->getDefaultVao());
        return read();
    }
    /// Columns of the frame with negative shading, as a frame of their own.
    std::vector<glm::u8vec4> drawPart(int from, int width)
    {
        const double scale = double(PassWidth) / width, middle = double(2 * from + width) / PassWidth - 1.0;
        const glm::dmat4 projection = glm::scale(glm::dmat4(1.0), glm::dvec3(scale, 1.0, 1.0)) *
                                      glm::translate(glm::dmat4(1.0), glm::dvec3(-middle, 0.0, 0.0)) *
                                      m_projection;
        const QSize part(width, PassHeight);
        QOpenGLFramebufferObject target(part, QOpenGLFramebufferObject::CombinedDepthStencil);
        target.bind();
        drawFrame(-from); // to the bit as in the whole
        EyeDomePass(*scene).apply(EyeDomeShading::Negative, part, projection, scene->getDefaultVao());
        std::vector<glm::u8vec4> colors(static_cast<std::size_t>(width * PassHeight));
        gl->glReadPixels(0, 0, width, PassHeight, GL_RGBA, GL_UNSIGNED_BYTE, colors.data());
        return colors;
    }
    Frame read()
    {
        std::unique_ptr<QOpenGLFramebufferObject> resolved;
        if (m_target->format().samples() > 0) {
            QOpenGLFramebufferObjectFormat format;
            format.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
            resolved = std::make_unique<QOpenGLFramebufferObject>(size, format);
            gl->glBindFramebuffer(GL_READ_FRAMEBUFFER, m_target->handle());
            gl->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved->handle());
            gl->glBlitFramebuffer(0, 0, PassWidth, PassHeight, 0, 0, PassWidth, PassHeight,
                                  GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT, GL_NEAREST);
            resolved->bind();
        }
        Frame frame;
        frame.colors.resize(PassWidth * PassHeight);
        frame.depths.resize(PassWidth * PassHeight);
        gl->glReadPixels(0, 0, PassWidth, PassHeight, GL_RGBA, GL_UNSIGNED_BYTE, frame.colors.data());
        gl->glReadPixels(0, 0, PassWidth, PassHeight, GL_DEPTH_COMPONENT, GL_FLOAT, frame.depths.data());
        m_target->bind();
        return frame;
    }
    /// Compares with the count; plain is the frame without the pass.
    void expectCounted(const Frame& plain, const Frame& shaded, bool isPositive)
    {
        const glm::dmat4 toEye = glm::inverse(m_projection);
        int compared = 0, darkened = 0, open = 0;
        for (int y = 0; y < PassHeight; ++y)
            for (int x = 0; x < PassWidth; ++x) {
                const std::optional<double> share = litShare(plain, toEye, isPositive, x, y);
                if (!share) {
                    ++open;
                    continue;
                }
                ++compared;
                darkened += *share < 1.0;
                for (int k = 0; k < 3; ++k)
                    ASSERT_NEAR(shaded.color(x, y)[k], plain.color(x, y)[k] * *share, 0.51) << x << ", " << y;
                ASSERT_EQ(shaded.color(x, y).a, plain.color(x, y).a);
            }
        std::printf("eye dome, %s: %d pixels as counted, %d of them darkened, %d left open\n",
                    isPositive ? "positive" : "negative", compared, darkened, open);
        EXPECT_GT(darkened, 300);
        EXPECT_LT(open, 100);
    }

    glm::dmat4 m_projection;
    std::unique_ptr<QOpenGLFramebufferObject> m_target;
};

TEST_F(EyeDomePassTest, DarkensByTheCount)
{
    makeTarget(0);
    const Frame plain = shaded(EyeDomeShading::Off);
    const Frame positive = shaded(EyeDomeShading::Positive), negative = shaded(EyeDomeShading::Negative);
    expectCounted(plain, positive, true);
    expectCounted(plain, negative, false);
    EXPECT_EQ(positive.depths, plain.depths);
    EXPECT_EQ(negative.depths, plain.depths);
}

TEST_F(EyeDomePassTest, FrameOfSeveralSamplesIsResolvedFirst)
{
    makeTarget(4);
    if (m_target->format().samples() < 2)
        GTEST_SKIP() << "this driver has no frame buffers of several samples";
    const Frame plain = shaded(EyeDomeShading::Off);
    expectCounted(plain, shaded(EyeDomeShading::Negative), false);
    expectCounted(plain, shaded(EyeDomeShading::Positive), true);
}

TEST_F(EyeDomePassTest, OffChangesNothing)
{
    makeTarget(0);
    draw();
    const Frame plain = read();
    EyeDomePass(*scene).apply(EyeDomeShading::Off, size, m_projection, scene->getDefaultVao());
    const Frame after = read();
    EXPECT_EQ(after.colors, plain.colors);
    EXPECT_EQ(after.depths, plain.depths);
}

TEST_F(EyeDomePassTest, PlaneIsNotDarkened)
{
    makeTarget(0);
    m_projection = glm::perspective(0.1, double(PassWidth) / PassHeight, 20.0, 60.0); // nothing but the wall
    const Frame plain = shaded(EyeDomeShading::Off);
    EXPECT_EQ(shaded(EyeDomeShading::Positive).colors, plain.colors);
    EXPECT_EQ(shaded(EyeDomeShading::Negative).colors, plain.colors);
}

// Parts of a frame, each drawn with the pixels beside it that the pass looks at. Their depths and distances
// are rounded otherwise, which shows where the count is open, and nowhere else.
TEST_F(EyeDomePassTest, PartsAreThoseOfTheWhole)
{
    makeTarget(0);
    const Frame plain = shaded(EyeDomeShading::Off), whole = shaded(EyeDomeShading::Negative);
    int differing = 0;
    for (const int left : {0, 32, 64}) {
        const int from = std::max(left - EyeDomePass::reach, 0);
        const int width = std::min(left + 32 + EyeDomePass::reach, PassWidth) - from;
        const std::vector<glm::u8vec4> part = drawPart(from, width);
        for (int y = 0; y < PassHeight; ++y)
            for (int x = left; x < left + 32; ++x) {
                if (part[static_cast<std::size_t>(y * width + x - from)] == whole.color(x, y)) continue;
                EXPECT_FALSE(litShare(plain, glm::inverse(m_projection), false, x, y)) << x << ", " << y;
                ++differing;
            }
    }
    std::printf("eye dome in parts: %d of %d pixels differ\n", differing, PassWidth * PassHeight);
    EXPECT_LT(differing, 5);
}

TEST_F(EyeDomePassTest, LeavesTheStateAndNoObjects)
{
    makeTarget(0);
    shaded(EyeDomeShading::Positive); // builds the program
    draw();
    EyeDomePass pass(*scene);
    pass.apply(EyeDomeShading::Positive, size, m_projection, scene->getDefaultVao());
    const GlObjects before = GlObjects::count(*gl);
    gl->glViewport(3, 4, 5, 6);
    gl->glActiveTexture(GL_TEXTURE0);
    for (int i = 0; i < 20; ++i)
        pass.apply(EyeDomeShading::Positive, size, m_projection, scene->getDefaultVao());
    EXPECT_EQ(GlObjects::count(*gl), before);
    const auto integer = [this](GLenum name) {
        GLint value = -1;
        gl->glGetIntegerv(name, &value);
        return value;
    };
    EXPECT_EQ(integer(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(m_target->handle()));
    EXPECT_EQ(integer(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(m_target->handle()));
    EXPECT_TRUE(gl->glIsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(integer(GL_ACTIVE_TEXTURE), GL_TEXTURE0);
    EXPECT_EQ(integer(GL_TEXTURE_BINDING_2D), 0);
    EXPECT_TRUE(gl->glIsEnabled(GL_BLEND));
    GLint viewport[4] = {0, 0, 0, 0};
    gl->glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 5);
}

TEST_F(EyeDomePassTest, AnotherContextOfTheShareGroup)
{
    makeTarget(0);
    const Frame expected = shaded(EyeDomeShading::Negative);
    EyeDomePass pass(*scene);
    QOffscreenSurface surface;
    surface.setFormat(scene->getContext().format());
    surface.create();
    QOpenGLContext context;
    context.setFormat(scene->getContext().format());
    context.setShareContext(&scene->getContext());
    ASSERT_TRUE(context.create());
    ASSERT_TRUE(context.makeCurrent(&surface));
    OpenGLFunctions* own = currentGLFunctions();
    ASSERT_TRUE(own);
    Scene3d::initializeGLCommon(own);
    unsigned vertexArray = 0;
    own->glGenVertexArrays(1, &vertexArray);
    {
        QOpenGLFramebufferObject target(size, QOpenGLFramebufferObject::CombinedDepthStencil);
        target.bind();
        own->glViewport(0, 0, PassWidth, PassHeight);
        own->glClearColor(0.5f, 0.25f, 0.125f, 0.5f);
        own->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        PaintContext frame = paintContext(PassWidth, PassHeight);
        frame.projection = glm::mat4(m_projection);
        frame.vertexArray = vertexArray;
        scene->drawFrame(frame, nullptr, {});
        EXPECT_EQ(QOpenGLContext::currentContext(), &context);
        pass.apply(EyeDomeShading::Negative, size, m_projection, vertexArray);
        EXPECT_EQ(QOpenGLContext::currentContext(), &context);
        std::vector<glm::u8vec4> colors(PassWidth * PassHeight);
        own->glReadPixels(0, 0, PassWidth, PassHeight, GL_RGBA, GL_UNSIGNED_BYTE, colors.data());
        EXPECT_EQ(colors, expected.colors);
    }
    own->glDeleteVertexArrays(1, &vertexArray);
    context.doneCurrent();
}

TEST(EyeDome, ReachIsThatOfTheShader)
{
    QFile file(":/Viewer3dModule/edl.fragment.glsl");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(
        file.readAll().contains("const int dome_radius = " + QByteArray::number(EyeDomePass::reach) + ";"));
}
