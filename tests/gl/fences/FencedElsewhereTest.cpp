// What else obeys the fence: maps of depths, pictures of items, selections by the whole item, and programs
// whose sources are none of the module's.
#include "FencedScene.h"

#include "tests/gl/selection/SelectionTest.h"
#include "tests/support/ImageCheck.h"
#include "tests/unit/fences/DegenerateRings.h"

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cmath>
#include <cstdio>

namespace {

class FencedElsewhereTest : public SelectionTest
{
protected:
    void SetUp() override
    {
        SelectionTest::SetUp();
        fence = std::make_unique<FenceSetter>(*project);
    }
    /// A prism that holds what lies left of the middle of the view.
    void holdLeftHalf()
    {
        Frame frame;
        frame.eye = {0.0, 0.0, -2.0};
        fence->set(prism(frame, closed({{-2, -2}, {0, -2}, {0, 2}, {-2, 2}}), 0.0));
    }
    /// Whether all pixels of the left half, and none of the right one, are so.
    template <typename IsDrawn>
    static void expectLeftHalf(IsDrawn isDrawn, const QSize& size = Size)
    {
        int wrong = 0;
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x)
                wrong += isDrawn(x, y) != (x < size.width() / 2);
        EXPECT_EQ(wrong, 0);
    }

    std::unique_ptr<FenceSetter> fence;
};

TEST_F(FencedElsewhereTest, DepthMapsLeaveOutWhatIsGrey)
{
    DrawnItem* item = addSquare(1, QRectF(0, 0, 64, 48));
    item->setDrawsOpaque(true); // so that it may be drawn by the program for depths
    holdLeftHalf();
    for (const bool isPreview : {false, true}) {
        fence->item().setInteractionMode(isPreview);
        SceneDepthMapGenerator generator(Size);
        const QImage map = generator.generate({item}, glm::dmat4(1.0), glm::dmat4(1.0));
        expectLeftHalf([&map](int x, int y) {
            return !std::isnan(reinterpret_cast<const float*>(map.constScanLine(y))[x]);
        });
        scene->makeCurrent();
    }
}

TEST_F(FencedElsewhereTest, PicturesOfItemsObey)
{
    DrawnItem* item = addSquare(1, QRectF(0, 0, 64, 48));
    holdLeftHalf();
    const QImage picture = scene->createItemsImage({item}, view());
    expectLeftHalf([&picture](int x, int y) { return qAlpha(picture.pixel(x, y)) != 0; });
    const QSize plan(48, 48); // the view from above has square pixels
    const QImage above =
        scene->createItemsImage({item}, QRectF(-1, -1, 2, 2), QRect(QPoint(), plan), nullptr);
    expectLeftHalf([&above](int x, int y) { return qAlpha(above.pixel(x, y)) != 0; }, plan);
}

TEST_F(FencedElsewhereTest, WhatIsCutAwayLiesNowhere)
{
    add(1, GL_LINES, {{-0.9f, 0.0f, 0.0f}, {0.9f, 0.0f, 0.0f}});
    const QRectF left(0, 0, 34, 48);
    for (const SelectionMode mode : {Through, Visible})
        EXPECT_EQ(select(left, mode, Inside), Ids());
    holdLeftHalf();
    for (const SelectionMode mode : {Through, Visible})
        EXPECT_EQ(select(left, mode, Inside), Ids({1}));
}

// As fences, and as the areas of selections. The scene's context tells the test of every message.
TEST_F(FencedElsewhereTest, DegeneratePolygonsGiveWhatTheirClassesSay)
{
    DrawnItem* item = addSquare(1, QRectF(0, 0, 64, 48));
    const PaintContext context = paintContext(8, 8);
    Dice dice(1);
    int pixels = 0, inside = 0, different = 0, selected = 0;
    for (int i = 0; i < 1000; ++i) {
        const int kind = i % degenerate_rings::kinds;
        const Ring ring = degenerate_rings::make(dice, kind);
        Frame frame;
        frame.eye = {0.0, 0.0, -1.0};
        i % 2 == 0 ? fence->set(prism(frame, ring, 3.0)) : fence->set(frustum(frame, ring, 0.5, 4.0, 1.0));
        EXPECT_EQ(scene->isFenced(),
                  kind != degenerate_rings::WithNaN && kind != degenerate_rings::TwoPoints);
        const QImage image = drawFrame(context);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const glm::dvec3 place((x + 0.5) / 4.0 - 1.0, 1.0 - (y + 0.5) / 4.0, 0.0);
                const bool expected = !scene->isFenced() || fence->fence().contains(place);
                ++pixels;
                inside += expected;
                if (kind != degenerate_rings::Huge) // for which shaders have too few digits, see Fence3dItem
                    different += (qRed(image.pixel(x, y)) != 0) != expected;
            }
        fence->reset();
        QPolygonF area;
        for (const glm::dvec2& point : ring)
            area << QPointF(32.0 + 20.0 * point.x, 24.0 + 20.0 * point.y);
        const bool hasPixels = kind != degenerate_rings::WithNaN && kind != degenerate_rings::Huge;
        const Ids found = select(area, i % 4 < 2 ? Through : Visible);
        EXPECT_TRUE(hasPixels || found.empty()) << kind;
        selected += !found.empty();
    }
    EXPECT_GT(item->draws, 1000);
    std::printf("%d pixels, %d inside, %d different; selected by %d of 1000 areas\n", pixels, inside,
                different, selected);
    EXPECT_EQ(different, 0);
    EXPECT_GT(selected, 400);
}

/// Sources of somebody else, who includes the fence and nothing besides.
class ForeignProgram
{
public:
    ForeignProgram()
    {
        write("foreign.vertex.glsl", "#version 430 core\n"
                                     "//#include \"shader:Viewer3dFences/FencePlace.glsl\"\n"
                                     "layout(location = 0) in vec3 point_coords;\n"
                                     "uniform mat4 projection;\nuniform mat4 view;\nuniform mat4 model;\n"
                                     "out vec4 place;\n"
                                     "void main()\n{\n"
                                     "    vec4 world = model * vec4(point_coords, 1.0);\n"
                                     "    place = fencePlace(world);\n"
                                     "    gl_Position = projection * view * world;\n}\n");
        write("foreign.fragment.glsl", "#version 430 core\n"
                                       "//#include \"shader:Viewer3dFences/Fence.glsl\"\n"
                                       "in vec4 place;\n"
                                       "layout(location = 0) out vec4 color;\n"
                                       "void main()\n{\n"
                                       "    color = vec4(0.0, 1.0, 0.0, 1.0);\n"
                                       "    if (!isOutsideFence(place)) return;\n"
                                       "    if (!fence_gray_preview) discard;\n"
                                       "    color = fencePreviewColor(color);\n}\n");
    }
    QStringList files() const
    {
        return {m_folder.filePath("foreign.vertex.glsl"), m_folder.filePath("foreign.fragment.glsl")};
    }

private:
    void write(const char* name, const QByteArray& text)
    {
        QFile file(m_folder.filePath(QLatin1String(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QTemporaryDir m_folder;
};

TEST_F(FencedElsewhereTest, ForeignProgramsObeyByAnIncludeLine)
{
    constexpr int ownType = TestElement::Type + 1;
    const ForeignProgram sources;
    QOpenGLShaderProgram* program = scene->createProgram(sources.files(), {}, {});
    scene->addDrawer(ownType, DrawerType::Mono,
                     std::make_unique<SequentialItem3dDrawer>(scene.get(), program));
    add(1, GL_TRIANGLES, square(QRectF(0, 0, 64, 48)), Qt::white, ownType);
    EXPECT_EQ(countPixels(drawFrame(view()), Qt::green), 64 * 48);
    const auto isGreen = [](const QImage& image) {
        return [&image](int x, int y) { return image.pixel(x, y) == qRgb(0, 255, 0); };
    };
    holdLeftHalf();
    const QImage swept = drawFrame(view());
    expectLeftHalf(isGreen(swept));
    EXPECT_EQ(countPixels(swept, Qt::black), 32 * 48);
    fence->item().setInteractionMode(true);
    const QImage preview = drawFrame(view());
    expectLeftHalf(isGreen(preview));
    EXPECT_EQ(countPixels(preview, Qt::black), 0);
    fence->item().setInteractionMode(false);
    fence->set({-1000.0, 0.0, 0.0}, 1000.0);
    const QImage ball = drawFrame(view());
    expectLeftHalf(isGreen(ball));
    fence->reset();
    EXPECT_EQ(countPixels(drawFrame(view()), Qt::green), 64 * 48);
}

} // namespace
