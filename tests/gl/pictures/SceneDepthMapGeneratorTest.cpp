#include "SceneDepthMapGeneratorTest.h"

#include "tests/support/LogTrap.h"

#include <Viewer3dModule/camera/ParallelProjection.h>

#include <QtGui/QOffscreenSurface>

#include <glm/gtc/matrix_transform.hpp>

namespace {

TEST_F(SceneDepthMapGeneratorTest, APlaneThatFacesTheCameraHasItsDistanceEverywhere)
{
    const QImage image = map({addWall(10)});
    EXPECT_EQ(image.size(), Size);
    EXPECT_EQ(image.format(), QImage::Format_ARGB32_Premultiplied);
    expectDistance(image, 10.0f);
}

TEST_F(SceneDepthMapGeneratorTest, ParallelProjectionsGiveDistancesToo)
{
    ParallelProjection projection;
    SceneDepthMapGenerator generator(Size);
    const QImage image = generator.generate({addWall(10)}, glm::dmat4(1.0),
                                            projection.calcProjectionMatrix(QSizeF(Size), 100.0, 1.0));
    ASSERT_EQ(coveredCount(image), 32 * 24);
    for (int x = 0; x < 32; ++x)
        EXPECT_NEAR(distanceAt(image, x, 7), 10.0f, 4.0f * 99.0f / 16777216.0f);
}

TEST_F(SceneDepthMapGeneratorTest, WhatCoversNothingGivesNaNEverywhere)
{
    SolidItem* behindTheEye = add(squareVertices(-50, -50, 50, 50, 10.0f));
    const QImage image = map({behindTheEye});
    EXPECT_EQ(image.size(), Size);
    EXPECT_EQ(coveredCount(image), 0);
}

TEST_F(SceneDepthMapGeneratorTest, TheTopRowComesFirst)
{
    const QImage image = map({addWall(10, true)});
    for (int y = 0; y < Size.height(); ++y)
        EXPECT_EQ(std::isnan(distanceAt(image, 16, y)), y >= 12) << y;
}

TEST_F(SceneDepthMapGeneratorTest, TheNearestSurfaceCounts)
{
    SolidItem* far = addWall(20);
    SolidItem* near = addWall(5, true);
    const QImage image = map({near, far});
    EXPECT_NEAR(distanceAt(image, 3, 2), 5.0f, 1e-4f);
    EXPECT_NEAR(distanceAt(image, 3, 20), 20.0f, 1e-4f);
}

TEST_F(SceneDepthMapGeneratorTest, OnlyTheChosenItemsCount)
{
    SolidItem* chosen = addWall(10);
    SolidItem* other = addWall(5);
    expectDistance(map({chosen}), 10.0f);
    EXPECT_EQ(other->draws, 0);
}

TEST_F(SceneDepthMapGeneratorTest, DuplicatesCountOnce)
{
    SolidItem* wall = addWall(10);
    expectDistance(map({wall, wall, wall}), 10.0f);
    EXPECT_EQ(wall->draws, 1);
}

TEST_F(SceneDepthMapGeneratorTest, NullPointersArePassedOver)
{
    SolidItem* wall = addWall(10);
    expectDistance(map({nullptr, wall, nullptr}), 10.0f);
}

TEST_F(SceneDepthMapGeneratorTest, NoItemsGiveANullImage)
{
    addWall(10);
    EXPECT_TRUE(map({}).isNull());
    EXPECT_TRUE(map({nullptr, nullptr}).isNull());
}

TEST_F(SceneDepthMapGeneratorTest, InvisibleItemsAreNotDrawn)
{
    SolidItem* wall = addWall(10);
    wall->setVisible(false);
    EXPECT_EQ(coveredCount(map({wall})), 0);
}

TEST_F(SceneDepthMapGeneratorTest, ItemsWithoutASceneArePassedOver)
{
    TestItem unbound;
    EXPECT_TRUE(map({&unbound}).isNull());
    expectDistance(map({&unbound, addWall(10)}), 10.0f);
}

TEST_F(SceneDepthMapGeneratorTest, ItemsOfASceneThatIsGoneGiveANullImage)
{
    VertexItem item(GL_TRIANGLES, squareVertices(-50, -50, 50, 50, -10));
    SceneDepthMapGenerator generator(Size);
    {
        Scene3d other(nullptr, nullptr);
        other.makeCurrent();
        item.setDrawer(other.getDefaultDrawer(DrawerType::Mono));
        expectDistance(generator.generate({&item}, glm::dmat4(1.0), central(Size)), 10.0f);
        scene->makeCurrent();
    }
    ASSERT_EQ(item.scene(), nullptr);
    EXPECT_TRUE(generator.generate({&item}, glm::dmat4(1.0), central(Size)).isNull());
}

// The scene's own context is of no use; the generator's draws all the same, and nothing touches the lost one.
TEST_F(SceneDepthMapGeneratorTest, ASceneWhoseContextIsGoneIsDrawnByTheGeneratorsOwn)
{
    SolidItem* wall = addWall(10);
    auto* surface = static_cast<QOffscreenSurface*>(scene->getSurface());
    scene->doneCurrent();
    surface->destroy();
    ASSERT_FALSE(scene->makeCurrent());
    expectDistance(map({wall}), 10.0f);
    scene->setBoundsDirty();
    expectDistance(map({wall}), 10.0f);
    surface->create();
    EXPECT_TRUE(scene->makeCurrent());
}

TEST_F(SceneDepthMapGeneratorTest, ItemsOfAnotherSceneThanTheFirstsAreNotDrawn)
{
    SolidItem* wall = addWall(10);
    Scene3d other(nullptr, nullptr);
    VertexItem foreign(GL_TRIANGLES, squareVertices(-50, -50, 50, 50, -5));
    foreign.setDrawer(other.getDefaultDrawer(DrawerType::Mono));
    expectDistance(map({wall, &foreign}), 10.0f);
    expectDistance(map({&foreign, wall}), 5.0f);
    scene->makeCurrent();
}

TEST_F(SceneDepthMapGeneratorTest, OneGeneratorServesSeveralScenes)
{
    SolidItem* wall = addWall(10);
    Scene3d other(nullptr, nullptr);
    VertexItem foreign(GL_TRIANGLES, squareVertices(-50, -50, 50, 50, -5));
    foreign.setDrawer(other.getDefaultDrawer(DrawerType::Mono));
    SceneDepthMapGenerator generator(Size);
    for (int i = 0; i < 2; ++i) {
        expectDistance(generator.generate({wall}, glm::dmat4(1.0), central(Size)), 10.0f);
        expectDistance(generator.generate({&foreign}, glm::dmat4(1.0), central(Size)), 5.0f);
    }
    scene->makeCurrent();
}

TEST_F(SceneDepthMapGeneratorTest, ThePassIsAnOrdinaryOneInTheGeneratorsContext)
{
    SolidItem* wall = addWall(10);
    glm::dmat4 view = glm::rotate(glm::dmat4(1.0), 0.1, glm::dvec3(0, 1, 0));
    bool isOffset = true;
    wall->onDraw = [&] { isOffset = currentGLFunctions()->glIsEnabled(GL_POLYGON_OFFSET_FILL); };
    SceneDepthMapGenerator(Size).generate({wall}, view, central(Size));
    const PaintContext& pass = wall->lastContext;
    EXPECT_NE(wall->lastQtContext, &scene->getContext());
    EXPECT_TRUE(wall->hadVertexArray);
    EXPECT_EQ(pass.viewportRect, QRect(0, 0, 32, 24));
    EXPECT_EQ(pass.viewport, viewportMatrix(QRect(0, 0, 32, 24)));
    EXPECT_EQ(pass.view, glm::mat4(view));
    EXPECT_EQ(pass.projection, glm::mat4(central(Size)));
    EXPECT_EQ(pass.drawMode, 0);
    EXPECT_EQ(pass.primitives, 7);
    EXPECT_EQ(pass.scene, scene.get());
    EXPECT_FALSE(isOffset);
}

// What draws in the generator's context outside of its passes finds the state that contexts have there.
TEST_F(SceneDepthMapGeneratorTest, PolygonOffsetIsBackAfterThePass)
{
    SolidItem* wall = addWall(10);
    QOpenGLContext* own = nullptr;
    wall->onDraw = [&] { own = QOpenGLContext::currentContext(); };
    SceneDepthMapGenerator generator(Size);
    generator.generate({wall}, glm::dmat4(1.0), central(Size));
    ASSERT_NE(own, nullptr);
    ASSERT_TRUE(own->makeCurrent(scene->getSurface()));
    EXPECT_TRUE(currentGLFunctions()->glIsEnabled(GL_POLYGON_OFFSET_FILL));
    scene->makeCurrent();
}

// 10 m along the axis, turned about the x axis; with polygon offset 45 degrees would be off by centimetres.
TEST_F(SceneDepthMapGeneratorTest, TiltedPlanesAreWhereTheyAre)
{
    for (const double degrees : {45.0, 75.0}) {
        const double slope = std::tan(glm::radians(degrees));
        const auto at = [slope](float x, float y) {
            return glm::vec3(x, y, static_cast<float>(-10.0 - slope * y));
        };
        SolidItem* plane = add({at(-20, -2), at(20, -2), at(20, 2), at(-20, -2), at(20, 2), at(-20, 2)});
        const QSize size(64, 64);
        const QImage image = map({plane}, size);
        const double tangent = std::tan(CentralProjection().getFov() / 2.0);
        int compared = 0;
        for (int y = 0; y < 64; ++y) {
            // The ray (., r, -1) t meets z = -10 - slope y at t = 10 + slope r t.
            const double r = (1.0 - 2.0 * (y + 0.5) / 64) * tangent;
            const float distance = distanceAt(image, 32, y);
            if (std::isnan(distance)) continue;
            EXPECT_NEAR(distance, 10.0 / (1.0 - slope * r), 1e-4) << degrees << ' ' << y;
            ++compared;
        }
        EXPECT_GT(compared, 5) << degrees;
    }
}

TEST_F(SceneDepthMapGeneratorTest, TwoGeneratorsOfDifferentSizesTakeTurns)
{
    SolidItem* wall = addWall(10);
    const QSize sizes[] = {QSize(16, 8), QSize(50, 70)};
    SceneDepthMapGenerator first(sizes[0]);
    SceneDepthMapGenerator second(sizes[1]);
    for (int i = 0; i < 3; ++i) {
        const QImage small = first.generate({wall}, glm::dmat4(1.0), central(sizes[0]));
        EXPECT_EQ(small.size(), sizes[0]);
        expectDistance(small, 10.0f);
        const QImage large = second.generate({wall}, glm::dmat4(1.0), central(sizes[1]));
        EXPECT_EQ(large.size(), sizes[1]);
        expectDistance(large, 10.0f);
    }
}

TEST_F(SceneDepthMapGeneratorTest, MapsDoNotShowThroughOneAnother)
{
    SolidItem* near = addWall(5);
    SolidItem* upper = addWall(10, true);
    SceneDepthMapGenerator generator(Size);
    expectDistance(generator.generate({near}, glm::dmat4(1.0), central(Size)), 5.0f);
    EXPECT_EQ(coveredCount(generator.generate({upper}, glm::dmat4(1.0), central(Size))), 32 * 12);
}

TEST_F(SceneDepthMapGeneratorTest, OnePixelIsEnough)
{
    const QImage image = map({addWall(10)}, QSize(1, 1));
    ASSERT_EQ(image.size(), QSize(1, 1));
    expectDistance(image, 10.0f);
}

TEST_F(SceneDepthMapGeneratorTest, EmptySizesGiveNullImages)
{
    SolidItem* wall = addWall(10);
    for (const QSize& size : {QSize(), QSize(0, 0), QSize(0, 8), QSize(8, 0), QSize(-8, 8), QSize(8, -8)}) {
        SceneDepthMapGenerator generator(size);
        EXPECT_TRUE(generator.generate({wall}, glm::dmat4(1.0), central(Size)).isNull());
    }
    EXPECT_EQ(wall->draws, 0);
}

TEST_F(SceneDepthMapGeneratorTest, SizesBeyondTheDriversLimitAreAnError)
{
    EXPECT_EQ(errorOf(QSize(100000, 100000)),
              QString::fromUtf8("Не удалось построить карту глубин средствами графического адаптера"));
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains("100000 x 100000")) << lines[0].toStdString();
    EXPECT_EQ(QOpenGLContext::currentContext(), &scene->getContext());
}

} // namespace
