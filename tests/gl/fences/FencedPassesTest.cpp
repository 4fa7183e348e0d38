// Passes with a fence and with a foreground: the preview, programs of both variants, depths.
#include "FencedScene.h"

#include "tests/gl/selection/SelectionTest.h"
#include "tests/support/ImageCheck.h"
#include "tests/support/ProgramList.h"

#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>

#include <QtGui/QOpenGLShaderProgram>

#include <cmath>

namespace {

constexpr int MarkType = TestElement::Type + 1;
const QColor ownColor(200, 100, 50);

class FencedPassesTest : public SelectionTest
{
protected:
    void SetUp() override
    {
        SelectionTest::SetUp();
        fence = std::make_unique<FenceSetter>(*project);
    }
    /// What lies left of the middle of the view.
    void fenceOffTheRight()
    {
        Frame frame;
        frame.eye = {0.0, 0.0, -2.0};
        fence->set(prism(frame, closed({{-2, -2}, {0, -2}, {0, 2}, {-2, 2}}), 0.0));
    }
    QImage frame() { return drawFrame(view()); }
    std::vector<float> depthsOf(const PaintContext& context)
    {
        RenderTarget target(*gl, context.viewportRect.size());
        target.bind();
        target.clear(Qt::black);
        scene->drawFrame(context, nullptr, {});
        return target.depth();
    }
    static QColor at(const QImage& image, double x, double y)
    {
        return image.pixelColor(int(x * image.width()), int(y * image.height()));
    }

    std::unique_ptr<FenceSetter> fence;
};

TEST_F(FencedPassesTest, OutsideIsGreyWhileTheFenceIsWorkedOn)
{
    addSquare(1, QRectF(0, 0, 64, 48), 0.0f, ownColor);
    fenceOffTheRight();
    EXPECT_EQ(at(frame(), 0.75, 0.5), QColor(Qt::black));
    fence->item().setInteractionMode(true);
    const QImage preview = frame();
    EXPECT_EQ(at(preview, 0.25, 0.5), ownColor);
    // half of the brightness, lifted by a quarter
    const int grey = int(std::lround(255 * 0.25 + 0.5 * (0.299 * 200 + 0.587 * 100 + 0.114 * 50)));
    EXPECT_NEAR(at(preview, 0.75, 0.5).red(), grey, 1);
    EXPECT_EQ(at(preview, 0.75, 0.5).red(), at(preview, 0.75, 0.5).green());
    EXPECT_EQ(at(preview, 0.75, 0.5).red(), at(preview, 0.75, 0.5).blue());
    fence->item().setInteractionMode(false);
    EXPECT_EQ(at(frame(), 0.75, 0.5), QColor(Qt::black));
    saveTestImage("fence_preview", preview);
}

TEST_F(FencedPassesTest, ThePreviewIsOfOrdinaryPassesOnly)
{
    addSquare(1, QRectF(0, 0, 32, 48), 0.0f, ownColor);
    addSquare(2, QRectF(32, 0, 32, 48), 0.0f, ownColor);
    fenceOffTheRight();
    fence->item().setInteractionMode(true);
    for (const SelectionMode mode : {Through, Visible})
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), mode), Ids({1}));
    for (const int drawMode : {1, 2}) {
        PaintContext context = view();
        context.drawMode = drawMode;
        RenderTarget target(*gl, Size, 4);
        target.bind();
        target.clear(QColor(0, 0, 0, 0));
        gl->glDisable(GL_BLEND);
        scene->drawFrame(context, nullptr, {});
        gl->glEnable(GL_BLEND);
        EXPECT_EQ(target.image(1).pixel(16, 24) & 0xFFFFFFu, 0x010000u) << drawMode; // bytes in reading order
        EXPECT_EQ(target.image(1).pixel(48, 24), 0u) << drawMode;
        EXPECT_EQ(target.depth()[std::size_t(24 * Size.width() + 48)], 1.0f) << drawMode;
    }
}

TEST_F(FencedPassesTest, SelectionAsksTheFenceAndNotTheBoxes)
{
    DrawnItem* item = add(1, GL_LINES, {{-0.9f, 0.0f, 0.0f}, {0.9f, 0.0f, 0.0f}});
    item->setDrawsOpaque(true);
    const QRectF right(33, 0, 31, 48);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids({1}));
    EXPECT_EQ(item->draws, 0) << "its box decides, without a fence";
    fenceOffTheRight();
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids({1}));
    EXPECT_EQ(select(right), Ids());
    Frame elsewhere;
    elsewhere.eye = {5.0, 0.0, 0.0};
    fence->set(prism(elsewhere, ::square(1.0), 0.0));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids());
    fence->reset();
    EXPECT_EQ(select(right), Ids({1}));
}

TEST_F(FencedPassesTest, ViewsAreTold)
{
    int updates = 0;
    QObject::connect(scene.get(), &Scene3d::updateView, [&updates] { ++updates; });
    EXPECT_FALSE(scene->isFenced());
    EXPECT_EQ(scene->getFence(), &fence->item());
    fence->set(glm::dvec3(0.0), 1.0);
    EXPECT_EQ(updates, 1);
    EXPECT_TRUE(scene->isFenced());
    fence->item().setInteractionMode(true);
    EXPECT_EQ(updates, 2);
    fence->reset();
    EXPECT_EQ(updates, 3);
    EXPECT_FALSE(scene->isFenced());
    project->clear(); // makes another element
    ASSERT_NE(Fence3dItem::find(project->getModel()), nullptr);
    EXPECT_EQ(scene->getFence(), Fence3dItem::find(project->getModel()));
    EXPECT_EQ(Scene3d(nullptr, nullptr).getFence(), nullptr);
    scene->makeCurrent();
}

TEST_F(FencedPassesTest, TypesCanBeTakenOutOfItsReach)
{
    addSquare(1, QRectF(32, 0, 32, 24), 0.0f, ownColor);
    DrawnItem* free = add(2, GL_TRIANGLES, square(QRectF(32, 24, 32, 24)), ownColor, MarkType);
    fenceOffTheRight();
    EXPECT_EQ(at(frame(), 0.75, 0.75), QColor(Qt::black));
    scene->setObeysFence(MarkType, false);
    const QImage image = frame();
    EXPECT_EQ(at(image, 0.75, 0.25), QColor(Qt::black));
    EXPECT_EQ(at(image, 0.75, 0.75), ownColor);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids({2}));
    const auto [points, lines, triangles] = scene->generateItemGeometry(free);
    EXPECT_NE(triangles, 0u);
    gl->glDeleteBuffers(1, &triangles);
    scene->setObeysFence(MarkType, true);
    EXPECT_EQ(at(frame(), 0.75, 0.75), QColor(Qt::black));
    (void)points;
    (void)lines;
}

TEST_F(FencedPassesTest, ForegroundLiesBeforeWhatIsNearer)
{
    addSquare(1, QRectF(0, 0, 64, 48), -0.9f, ownColor);
    DrawnItem* mark = add(2, GL_TRIANGLES, square(QRectF(16, 12, 8, 8), 0.9f), Qt::green, MarkType);
    EXPECT_EQ(frame().pixelColor(20, 16), ownColor);
    scene->setForeground(MarkType, true);
    EXPECT_TRUE(scene->isForeground(MarkType));
    EXPECT_EQ(frame().pixelColor(20, 16), QColor(Qt::green));
    const std::vector<float> depths = depthsOf(view());
    for (std::size_t i = 0; i < depths.size(); ++i) {
        const int x = int(i) % Size.width(), y = int(i) / Size.width();
        const bool isMark = x >= 16 && x < 24 && y >= 12 && y < 20;
        ASSERT_EQ(depths[i] < 0.001f, isMark) << x << ", " << y;
    }
    // z of 0.9 in a range of its ownColor, the offset of faces aside
    EXPECT_NEAR(Scene3d::depthValueToFrustumZ(depths[std::size_t(16 * Size.width() + 20)]), 0.9, 1e-3);
    GLdouble range[2] = {-1.0, -1.0};
    gl->glGetDoublev(GL_DEPTH_RANGE, range);
    EXPECT_FLOAT_EQ(float(range[0]), 0.001f);
    EXPECT_EQ(range[1], 1.0);
    EXPECT_EQ(select(QRectF(18, 14, 2, 2), Visible), Ids({2}));

    SceneDepthMapGenerator generator(Size);
    const QImage map = generator.generate({mark}, glm::dmat4(1.0), glm::dmat4(1.0));
    for (int y = 0; y < Size.height(); ++y)
        for (int x = 0; x < Size.width(); ++x)
            ASSERT_TRUE(std::isnan(reinterpret_cast<const float*>(map.constScanLine(y))[x]));
    scene->makeCurrent();
    scene->setForeground(MarkType, false);
    EXPECT_EQ(frame().pixelColor(20, 16), ownColor);
}

TEST_F(FencedPassesTest, ForegroundAtTheFarPlaneIsForegroundStill)
{
    add(2, GL_POINTS, {{0.01f, 0.01f, 1.0f}}, Qt::green, MarkType);
    scene->setForeground(MarkType, true);
    const std::vector<float> depths = depthsOf(view());
    const float nearest = *std::min_element(depths.begin(), depths.end());
    EXPECT_LT(nearest, 0.001f);
    EXPECT_GT(nearest, 0.000999f);
}

TEST_F(FencedPassesTest, LocalForegroundObeysNoFence)
{
    addSquare(1, QRectF(0, 0, 64, 48), -0.9f, ownColor);
    fence->set({50.0, 0.0, 0.0}, 1.0);
    auto handle = std::make_unique<VertexItem>(GL_TRIANGLES, square(QRectF(16, 12, 8, 8), 0.5f), Qt::red);
    handle->setDrawer(scene->getLocalForegroundDrawer(DrawerType::Mono));
    EXPECT_EQ(scene->getLocalForegroundDrawer(DrawerType::Mono), handle->getDrawer());
    scene->addLocalItem(std::move(handle));
    addSquare(3, QRectF(0, 0, 8, 8));
    scene->addLocalItem(std::make_unique<VertexItem>(GL_TRIANGLES, square(QRectF(40, 12, 8, 8)), Qt::blue));
    const QImage image = frame();
    EXPECT_EQ(image.pixelColor(20, 16), QColor(Qt::red));
    EXPECT_EQ(countPixels(image, Qt::black), 64 * 48 - 64);
    fence->reset();
    EXPECT_EQ(frame().pixelColor(20, 16), QColor(Qt::red));
    EXPECT_EQ(frame().pixelColor(30, 30), ownColor);
}

TEST_F(FencedPassesTest, UniformsKeepTheirValuesInAllVariants)
{
    QOpenGLShaderProgram* program =
        scene->createProgram({shaderPath("common.vertex"), shaderPath("mono.fragment")},
                             {"RX_USE_PER_VERTEX_COLOR", "RX_USE_ELEVATION_COLOR"}, {});
    ASSERT_TRUE(program->isLinked());
    std::vector<std::pair<double, QColor>> levels;
    for (int i = 0; i < 100; ++i)
        levels.emplace_back(0.5 * i, QColor(i, 2 * i, 255 - i));
    Item3dDrawer::setColorLevels(program, levels, 0.5f, true);
    program->setUniformValue("item_color", QColor(1, 2, 3, 4));
    const unsigned wanted[2] = {0xFFFFFFFFu, 7u};
    gl->glUniform2uiv(program->uniformLocation("item_id"), 1, wanted);
    program->setUniformValue("item_flags", -2);
    program->setUniformValue("model", QMatrix4x4(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16));
    const auto values = [&](const QOpenGLShaderProgram& shown) {
        const unsigned id = shown.programId();
        std::vector<float> all(16 + 4 + 1024 * 2);
        gl->glGetUniformfv(id, shown.uniformLocation("model"), all.data());
        gl->glGetUniformfv(id, shown.uniformLocation("item_color"), all.data() + 16);
        for (int i = 0; i < 100; ++i)
            gl->glGetUniformfv(id, shown.uniformLocation(QStringLiteral("elevLevels[%1]").arg(i / 4)),
                               all.data() + 20 + 4 * i);
        GLuint read[2] = {0, 0};
        gl->glGetUniformuiv(id, shown.uniformLocation("item_id"), read);
        EXPECT_EQ(read[0], wanted[0]);
        EXPECT_EQ(read[1], wanted[1]);
        GLuint colors[4] = {0, 0, 0, 0};
        gl->glGetUniformuiv(id, shown.uniformLocation("colorLevels[7]"), colors);
        EXPECT_NE(colors[0], 0u);
        GLint integers[2] = {0, 0};
        gl->glGetUniformiv(id, shown.uniformLocation("item_flags"), integers);
        gl->glGetUniformiv(id, shown.uniformLocation("levelCount"), integers + 1);
        EXPECT_EQ(integers[0], -2);
        EXPECT_EQ(integers[1], 100);
        return all;
    };
    const std::vector<float> before = values(*program);
    EXPECT_NE(before, std::vector<float>(before.size()));
    EXPECT_EQ(program->uniformLocation("fence_to_use"), -1);
    for (const ProgramFence kind : {ProgramFence::Sphere, ProgramFence::Swept}) {
        for (const bool marks : {false, true}) {
            QOpenGLShaderProgram& variant = beginProgramVariant(*program, {kind, marks, marks});
            EXPECT_NE(&variant, program);
            EXPECT_EQ(&beginProgramVariant(*program, {kind, marks, marks}), &variant) << "built anew";
            EXPECT_EQ(&beginProgramVariant(variant, {kind, marks, marks}), &variant) << "has it already";
            EXPECT_GE(variant.uniformLocation("fence_to_use"), 0);
            EXPECT_EQ(variant.uniformLocation("sphere_fence_radius") >= 0, kind == ProgramFence::Sphere);
            EXPECT_EQ(variant.uniformLocation("item_index") >= 0, marks);
            EXPECT_EQ(values(variant), before);
        }
    }
    EXPECT_EQ(&beginProgramVariant(*program, {}), program);
    EXPECT_EQ(program->uniformLocation("fence_to_use"), -1);
    EXPECT_EQ(program->uniformLocation("item_index"), -1);
    EXPECT_EQ(values(*program), before);
}

TEST_F(FencedPassesTest, VariantsFollowTheirProgram)
{
    QOpenGLShaderProgram* program =
        scene->createProgram({shaderPath("common.vertex"), shaderPath("mono.fragment")}, {}, {});
    const auto colorOf = [&](QOpenGLShaderProgram& shown) {
        glm::vec4 color(-1.0f);
        gl->glGetUniformfv(shown.programId(), shown.uniformLocation("item_color"), &color.x);
        return color;
    };
    for (const float red : {0.25f, 0.5f}) {
        ASSERT_TRUE(program->bind());
        program->setUniformValue("item_color", red, 1.0f, 0.5f, 0.75f);
        QOpenGLShaderProgram& variant = beginProgramVariant(*program, {ProgramFence::None, true});
        EXPECT_EQ(colorOf(variant), glm::vec4(red, 1.0f, 0.5f, 0.75f));
        variant.setUniformValue("item_color", 0.0f, 0.0f, 0.0f, 0.0f); // what a pass leaves does not stay
        EXPECT_EQ(colorOf(beginProgramVariant(*program, {ProgramFence::None, true})),
                  glm::vec4(red, 1.0f, 0.5f, 0.75f));
    }
}

TEST_F(FencedPassesTest, ProgramsThatDoNotAskForItStayAsTheyAre)
{
    QOpenGLShaderProgram plain;
    plain.addShaderFromSourceCode(QOpenGLShader::Vertex,
                                  "#version 430 core\nvoid main() { gl_Position = vec4(0); }");
    plain.addShaderFromSourceCode(QOpenGLShader::Fragment,
                                  "#version 430 core\nout vec4 c;\nvoid main() { c = vec4(1.0); }");
    ASSERT_TRUE(plain.link());
    EXPECT_EQ(&beginProgramVariant(plain, {ProgramFence::Sphere, true}), &plain);
    QOpenGLShaderProgram* depths = scene->createProgram({shaderPath("common.vertex")}, {}, {});
    EXPECT_EQ(&beginProgramVariant(*depths, {ProgramFence::Swept, true}), depths);
    EXPECT_TRUE(depths->isLinked());
}

// Between the frames programs come and go with the fence, and each frame looks as it should.
TEST_F(FencedPassesTest, EveryFenceComesAndGoes)
{
    addSquare(1, QRectF(0, 0, 64, 48), 0.0f, ownColor);
    const QImage whole = frame();
    for (int i = 0; i < 3; ++i) {
        fenceOffTheRight();
        EXPECT_EQ(countPixels(frame(), ownColor), 32 * 48);
        fence->set(glm::dvec3(0.0), 0.1);
        EXPECT_EQ(at(frame(), 0.9, 0.9), QColor(Qt::black));
        fence->reset();
        EXPECT_EQ(frame(), whole);
    }
}

} // namespace
