#include "PureColors.h"

#include "tests/support/ImageCheck.h"
#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawables/Polyline3dForegroundItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

QPen pen(const QColor& color, Qt::PenStyle style = Qt::SolidLine, double width = 1.0)
{
    return QPen(color, width, style);
}

class PolyPolyline3dItemTest : public SceneTest
{
protected:
    void TearDown() override
    {
        if (scene) scene->makeCurrent();
        item.reset();
        SceneTest::TearDown();
    }
    /// Makes the item: two horizontal lines over the whole width, through the middles of rows 2 and 6 of 8.
    PolyPolyline3dItem& makeRows(int drawerType = DrawerType::Mono)
    {
        item = std::make_unique<PolyPolyline3dItem>(0, drawerType);
        item->setSceneDrawer(scene.get());
        item->setPoints({{-1, 0.375f, 0}, {1, 0.375f, 0}, {-1, -0.625f, 0}, {0, -0.625f, 0}, {1, -0.625f, 0}},
                        {2, 3});
        item->setPen(pen(red));
        return *item;
    }
    QImage frame() { return drawFrame(paintContext(8, 8)); }
    std::vector<glm::vec4> capturedLines(Drawable3dItem& captured)
    {
        const auto [points, lines, triangles] = scene->generateItemGeometry(&captured);
        EXPECT_EQ(points, 0u);
        EXPECT_EQ(triangles, 0u);
        GLint size = 0;
        gl->glBindBuffer(GL_ARRAY_BUFFER, lines);
        gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
        std::vector<glm::vec4> vertices(static_cast<std::size_t>(size) / sizeof(glm::vec4));
        gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, size, vertices.data());
        gl->glDeleteBuffers(1, &lines);
        return vertices;
    }

    std::unique_ptr<PolyPolyline3dItem> item;
};

} // namespace

TEST_F(PolyPolyline3dItemTest, DrawsEachPolylineInThePensColour)
{
    makeRows();
    const QImage image = frame();
    EXPECT_EQ(countPixels(image, red), 16);
    EXPECT_EQ(image.pixelColor(0, 2), red);
    EXPECT_EQ(image.pixelColor(7, 2), red);
    EXPECT_EQ(image.pixelColor(4, 6), red);
}

TEST_F(PolyPolyline3dItemTest, NothingConnectsThePolylines)
{
    makeRows().setPoints({{-1, 0.375f, 0}, {1, 0.375f, 0}, {1, -0.625f, 0}, {-1, -0.625f, 0}}, {2, 2});
    const QImage image = frame();
    EXPECT_EQ(countPixels(image, red), 16);
    EXPECT_EQ(image.pixelColor(7, 4), QColor(0, 0, 0));
}

TEST_F(PolyPolyline3dItemTest, DrawsOnlyWithTheLinesBit)
{
    // A corner, which would make a triangle, and a point.
    makeRows().setPoints({{-1, 0.375f, 0}, {1, 0.375f, 0}, {1, -1, 0}, {-0.5f, -0.5f, 0}}, {3, 1});
    PaintContext context = paintContext(8, 8);
    for (const int kinds : {0, 1, 4, 5, 8, 12}) {
        context.primitives = kinds;
        EXPECT_EQ(countPixels(drawFrame(context), red), 0) << kinds;
    }
    context.primitives = 2;
    EXPECT_GE(countPixels(drawFrame(context), red), 8);
}

TEST_F(PolyPolyline3dItemTest, APolylineOfOneVertexIsAPointOfThePensWidth)
{
    makeRows().setPoints({{0, 0, 0}}, {1});
    item->setPen(pen(red, Qt::SolidLine, 4.0));
    EXPECT_EQ(countPixels(frame(), red), 16);
    PaintContext context = paintContext(8, 8);
    context.primitives = 2;
    EXPECT_EQ(countPixels(drawFrame(context), red), 0);
}

TEST_F(PolyPolyline3dItemTest, ThePensWidthDoesNothingForLines)
{
    makeRows().setPen(pen(red, Qt::SolidLine, 4.0));
    EXPECT_EQ(countPixels(frame(), red), 16);
}

// A row of 64 pixels: dashes and gaps of 10 from the start of each segment, so 10 red of 20 from 0 and from
// 32 on.
TEST_F(PolyPolyline3dItemTest, DashesStartAtEachSegment)
{
    makeRows(DrawerType::DashedLines).setPoints({{-1, 0, 0}, {0, 0, 0}, {1, 0, 0}}, {3});
    item->setPen(pen(red, Qt::DotLine));
    PaintContext context = paintContext(64, 1);
    const QImage image = drawFrame(context);
    for (int x = 0; x < 64; ++x)
        EXPECT_EQ(image.pixelColor(x, 0), x % 32 % 20 < 10 ? red : QColor(0, 0, 0)) << x;
    item->setPen(pen(red));
    EXPECT_EQ(countPixels(drawFrame(context), red), 64);
}

TEST_F(PolyPolyline3dItemTest, IsHighlightedWithItsOwner)
{
    struct Owner : Drawable3dItem
    {
        bool isHighlighted() const override { return true; }
    } owner;
    makeRows().setOwner(&owner);
    EXPECT_EQ(countPixels(frame(), QColor(Qt::yellow)), 16) << "the settings' colour of what is selected";
}

TEST_F(PolyPolyline3dItemTest, WideLinesSkipPoints)
{
    makeRows(DrawerType::WideLines).setPoints({{-1, 0, 0}, {1, 0, 0}, {0, 0.75f, 0}}, {2, 1});
    item->setPen(pen(red, Qt::SolidLine, 4.0));
    const QImage image = frame();
    EXPECT_EQ(image.pixelColor(4, 3), red);
    EXPECT_EQ(image.pixelColor(4, 4), red);
    EXPECT_EQ(image.pixelColor(4, 1), QColor(0, 0, 0)) << "the program takes no points";
}

// A ribbon of half the height along a path of four points over the whole width.
TEST_F(PolyPolyline3dItemTest, SolidLinesReachFromEndToEnd)
{
    makeRows(DrawerType::SolidRegularLines)
        .setPoints({{-1, 0, 0}, {-0.5f, 0, 0}, {0.5f, 0, 0}, {1, 0, 0}}, {4});
    auto* drawer = dynamic_cast<SequentialItem3dDrawer*>(item->getDrawer());
    ASSERT_NE(drawer, nullptr);
    QOpenGLShaderProgram* program = drawer->getDefaultProgram();
    ASSERT_TRUE(program->bind());
    const float section[] = {-0.5f, 0.0f, 0.5f, 0.0f};
    gl->glUniform2fv(program->uniformLocation("section"), 2, section);
    gl->glUniform1i(program->uniformLocation("section_points_count"), 2);
    gl->glUniform1i(program->uniformLocation("uLightMode"), 0);
    EXPECT_EQ(countPixels(frame(), red), 32);
    item->setPoints({{-1, 0, 0}, {1, 0, 0}}, {2});
    EXPECT_EQ(countPixels(frame(), red), 32);
}

TEST_F(PolyPolyline3dItemTest, GivesItsDataBack)
{
    const std::vector<glm::vec3> points = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    makeRows().setPoints(points, {2, 1});
    EXPECT_EQ(item->getData().first, points);
    EXPECT_EQ(item->getData().second, (std::vector<int>{2, 1}));
    EXPECT_EQ(item->getVertices(), points);
}

TEST_F(PolyPolyline3dItemTest, SingleVerticesAreThoseOfAll)
{
    makeRows();
    const std::vector<glm::vec3> all = item->getVertices();
    ASSERT_EQ(all.size(), 5u);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(item->getVertex(i), all[static_cast<std::size_t>(i)]);
    EXPECT_TRUE(std::isnan(item->getVertex(-1).x));
    EXPECT_TRUE(std::isnan(item->getVertex(5).x));
}

TEST_F(PolyPolyline3dItemTest, ClearingKeepsTheBufferAndDrawsNothing)
{
    makeRows();
    const auto data = item->getData();
    item->clear();
    EXPECT_EQ(item->getData().first, data.first);
    EXPECT_TRUE(item->getData().second.empty());
    EXPECT_EQ(countPixels(frame(), red), 0);
    item->setPoints(data.first, data.second);
    EXPECT_EQ(countPixels(frame(), red), 16);
}

TEST_F(PolyPolyline3dItemTest, BindsToTheDefaultDrawerOfItsType)
{
    makeRows(DrawerType::WideLines);
    EXPECT_EQ(item->getDrawer(), scene->getDefaultDrawer(DrawerType::WideLines));
    EXPECT_EQ(item->scene(), scene.get());
    item->setDefaultDrawerType(DrawerType::DashedLines);
    item->setSceneDrawer(scene.get());
    EXPECT_EQ(item->getDrawer(), scene->getDefaultDrawer(DrawerType::DashedLines));
    EXPECT_TRUE(scene->getDefaultDrawer(DrawerType::WideLines)->getItems().empty());
}

TEST_F(PolyPolyline3dItemTest, BindsToADrawerOfItsOwnVisibilityType)
{
    item = std::make_unique<PolyPolyline3dItem>(42, DrawerType::DashedLines);
    EXPECT_FALSE(scene->isHasDrawer(42, DrawerType::DashedLines));
    item->setSceneDrawer(scene.get());
    ASSERT_TRUE(scene->isHasDrawer(42, DrawerType::DashedLines));
    EXPECT_EQ(item->getDrawer(), scene->getDrawer(42, DrawerType::DashedLines));
    EXPECT_NE(item->getDrawer(), scene->getDefaultDrawer(DrawerType::DashedLines));
}

TEST_F(PolyPolyline3dItemTest, TheScenesCaptureHoldsItsSegments)
{
    makeRows().setPoints({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {9, 9, 9}, {5, 0, 1}, {6, 0, 1}}, {3, 1, 2});
    item->setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(0, 10, 0)), false);
    EXPECT_EQ(capturedLines(*item),
              (std::vector<glm::vec4>{
                  {0, 10, 0, 1}, {1, 10, 0, 1}, {1, 10, 0, 1}, {2, 10, 0, 1}, {5, 10, 1, 1}, {6, 10, 1, 1}}));
}

TEST_F(PolyPolyline3dItemTest, TheCaptureOfAClosedForegroundLineNeedsNoDrawBefore)
{
    auto line = std::make_unique<Polyline3dForegroundItem>(
        DrawerType::WideLines, std::vector<glm::dvec3>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    line->setClosed(true);
    Polyline3dForegroundItem& captured = *line;
    scene->addLocalItem(std::move(line));
    EXPECT_EQ(capturedLines(captured),
              (std::vector<glm::vec4>{
                  {0, 0, 0, 1}, {1, 0, 0, 1}, {1, 0, 0, 1}, {1, 1, 0, 1}, {1, 1, 0, 1}, {0, 0, 0, 1}}));
}

TEST_F(PolyPolyline3dItemTest, TheCaptureOfASinglePointIsAPoint)
{
    auto line =
        std::make_unique<Polyline3dForegroundItem>(DrawerType::Mono, std::vector<glm::dvec3>{{3, 4, 5}});
    Polyline3dForegroundItem& captured = *line;
    scene->addLocalItem(std::move(line));
    const auto [points, lines, triangles] = scene->generateItemGeometry(&captured);
    EXPECT_NE(points, 0u);
    EXPECT_EQ(lines, 0u);
    EXPECT_EQ(triangles, 0u);
    glm::vec4 vertex(0.0f);
    gl->glBindBuffer(GL_ARRAY_BUFFER, points);
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof vertex, &vertex.x);
    EXPECT_EQ(vertex, glm::vec4(3, 4, 5, 1));
    gl->glDeleteBuffers(1, &points);
}
