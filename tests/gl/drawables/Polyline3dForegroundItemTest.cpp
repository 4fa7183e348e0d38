#include "CaptureTest.h"

#include <Viewer3dModule/drawables/Polyline3dForegroundItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

using Positions = std::vector<glm::vec3>;

const char* const colorAndWidthVertex = R"(#version 430 core
layout(location = 0) in vec3 point;
uniform vec4 item_color;
uniform float pen_width;
void main() { gl_Position = vec4(point, 1.0) * (item_color + vec4(pen_width)); }
)";

/// The item with its upload in the open.
struct OpenItem : Polyline3dForegroundItem
{
    using Polyline3dForegroundItem::Polyline3dForegroundItem;
    using Polyline3dForegroundItem::update;
};

class Polyline3dForegroundItemTest : public CaptureTest
{
protected:
    void SetUp() override
    {
        CaptureTest::SetUp();
        before = buffers();
        item = std::make_unique<OpenItem>(DrawerType::Mono,
                                          std::vector<glm::dvec3>{{1, 0, 0}, {2, 0, 0}, {2, 5, 0}});
    }
    void TearDown() override
    {
        makeCurrent();
        item.reset();
        EXPECT_EQ(buffers(), before);
        CaptureTest::TearDown();
    }
    Positions lines()
    {
        return capture(GL_LINES, [this] { item->drawElement(pass(2)); });
    }
    unsigned buffer()
    {
        std::set<unsigned> names = buffers();
        for (const unsigned name : before)
            names.erase(name);
        return names.size() == 1 ? *names.begin() : 0;
    }
    int uploadedVertices()
    {
        GLint size = 0;
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer());
        gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
        return size / 12;
    }
    /// Changes the uploaded first vertex behind the item's back.
    void markBuffer(const glm::vec3& vertex)
    {
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer());
        gl->glBufferSubData(GL_ARRAY_BUFFER, 0, sizeof vertex, &vertex.x);
    }

    std::unique_ptr<OpenItem> item;
    std::set<unsigned> before;
};

} // namespace

TEST_F(Polyline3dForegroundItemTest, UploadsAtTheFirstDraw)
{
    EXPECT_EQ(buffers(), before);
    EXPECT_EQ(lines(), (Positions{{1, 0, 0}, {2, 0, 0}, {2, 0, 0}, {2, 5, 0}}));
    EXPECT_EQ(uploadedVertices(), 3);
}

TEST_F(Polyline3dForegroundItemTest, AClosedPolylineEndsWithItsFirstPoint)
{
    item->setClosed(true);
    EXPECT_EQ(lines(), (Positions{{1, 0, 0}, {2, 0, 0}, {2, 0, 0}, {2, 5, 0}, {2, 5, 0}, {1, 0, 0}}));
    EXPECT_EQ(uploadedVertices(), 4);
    item->popPoint();
    EXPECT_EQ(lines(), (Positions{{1, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(uploadedVertices(), 2);
}

TEST_F(Polyline3dForegroundItemTest, EveryChangeOfShapeReachesTheNextDraw)
{
    lines();
    item->pushPoint({7, 7, 7});
    EXPECT_EQ(lines().back(), glm::vec3(7, 7, 7));
    item->popPoint();
    EXPECT_EQ(lines().size(), 4u);
    item->setPoints({{0, 0, 1}, {0, 0, 2}});
    EXPECT_EQ(lines(), (Positions{{0, 0, 1}, {0, 0, 2}}));
    item->setAdditionalTransform(glm::translate(glm::dmat4(1.0), glm::dvec3(10, 0, 0)));
    EXPECT_EQ(lines(), (Positions{{10, 0, 1}, {10, 0, 2}}));
}

TEST_F(Polyline3dForegroundItemTest, VerticesAreThoseThatWereDrawnLast)
{
    EXPECT_TRUE(item->getVertices().empty());
    EXPECT_TRUE(std::isnan(item->getVertex(0).x));
    item->setClosed(true);
    lines();
    const Positions all = item->getVertices();
    EXPECT_EQ(all, (Positions{{1, 0, 0}, {2, 0, 0}, {2, 5, 0}, {1, 0, 0}}));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(item->getVertex(i), all[static_cast<std::size_t>(i)]);
    EXPECT_TRUE(std::isnan(item->getVertex(4).x));
}

TEST_F(Polyline3dForegroundItemTest, ColourAndWidthDoNotUploadAgain)
{
    lines();
    markBuffer({55, 0, 0});
    item->setColor(Qt::red);
    item->setLineWidth(5);
    EXPECT_EQ(lines().front(), glm::vec3(55, 0, 0));
    item->setClosed(false);
    EXPECT_EQ(lines().front(), glm::vec3(1, 0, 0)) << "a set that changes nothing is a change all the same";
}

TEST_F(Polyline3dForegroundItemTest, PointsBecomeFloatsAfterTheTransform)
{
    item->setPoints({{2.7e6 + 0.001, 1.2e6, 400}, {2.7e6 + 0.002, 1.2e6, 400}});
    item->setAdditionalTransform(glm::scale(glm::dmat4(1.0), glm::dvec3(1000.0)) *
                                 glm::translate(glm::dmat4(1.0), glm::dvec3(-2.7e6, -1.2e6, -400)));
    const Positions drawn = lines();
    ASSERT_EQ(drawn.size(), 2u);
    EXPECT_NEAR(drawn[0].x, 1.0f, 1e-5f);
    EXPECT_NEAR(drawn[1].x, 2.0f, 1e-5f);
    EXPECT_EQ(drawn[0].y, 0.0f);
}

TEST_F(Polyline3dForegroundItemTest, TheTransformsLastRowDoesNotDivide)
{
    glm::dmat4 matrix(1.0);
    matrix[0][3] = 1.0; // w = x + 1
    item->setAdditionalTransform(matrix);
    EXPECT_EQ(lines().back(), glm::vec3(2, 5, 0));
}

TEST_F(Polyline3dForegroundItemTest, ADrawWithNothingCurrentIsMadeUpFor)
{
    context.doneCurrent();
    item->drawElement(pass(2));
    item->update(pass(2));
    makeCurrent();
    EXPECT_EQ(lines().size(), 4u);
}

TEST_F(Polyline3dForegroundItemTest, SetsColourAndWidthAtEachDraw)
{
    const auto program = link(colorAndWidthVertex, nullptr, "gl_Position");
    PaintContext paint = pass(2);
    paint.program = program.get();
    item->setColor(QColor(51, 102, 153, 204));
    item->setLineWidth(3);
    capture(*program, GL_LINES, [&] { item->drawElement(paint); });
    EXPECT_LT(glm::distance(uniform(*program, "item_color"), glm::vec4(0.2f, 0.4f, 0.6f, 0.8f)), 1e-4f);
    EXPECT_EQ(uniform(*program, "pen_width").x, 3.0f);
    item->setLineWidth(4);
    capture(*program, GL_LINES, [&] { item->drawElement(paint); });
    EXPECT_EQ(uniform(*program, "pen_width").x, 4.0f);
}

TEST_F(Polyline3dForegroundItemTest, AnItemWithoutPointsDrawsNothing)
{
    item->setPoints({});
    EXPECT_TRUE(lines().empty());
}
