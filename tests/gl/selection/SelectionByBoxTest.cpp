#include "SelectionTest.h"

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <QtGui/QOpenGLShaderProgram>

namespace {

/// What is decided by boxes, without drawing.
class SelectionByBoxTest : public SelectionTest
{
protected:
    const QRectF around = QRectF(5, 5, 20, 20);

    /// A line, the diagonal of a rectangle.
    DrawnItem* addOpaque(LONGID id, const QRectF& pixels = QRectF(10, 10, 6, 6))
    {
        const std::vector<glm::vec3> corners = square(pixels);
        DrawnItem* item = add(id, GL_LINES, {corners[0], corners[2]});
        item->setDrawsOpaque(true);
        return item;
    }
};

TEST_F(SelectionByBoxTest, AnOpaqueItemInTheAreaIsNotDrawn)
{
    DrawnItem* item = addOpaque(1);
    EXPECT_EQ(select(around), Ids{1});
    EXPECT_EQ(item->draws, 0);
    EXPECT_EQ(select(QRectF(5, 5, 8, 15)), Ids{1});
    EXPECT_EQ(item->draws, 1) << "its box crosses the border";
    EXPECT_EQ(select(around, Visible), Ids{1});
    EXPECT_EQ(item->draws, 2) << "something might hide it";
}

TEST_F(SelectionByBoxTest, InsideThereIsNothingToDrawEither)
{
    DrawnItem* item = addOpaque(1);
    item->setPixelReach(2.0f);
    EXPECT_EQ(select(around, Through, Inside), Ids{1});
    EXPECT_EQ(item->draws, 0);
}

TEST_F(SelectionByBoxTest, OthersAreDrawn)
{
    addOpaque(1)->setDrawsOpaque(false);
    elementOf(addOpaque(2)).setHighlighted(true);
    addOpaque(3)->info = {};
    DrawnItem* surface = addSquare(4, QRectF(10, 10, 6, 6));
    surface->setDrawsOpaque(true);
    DrawnItem* decided = addOpaque(5);
    EXPECT_EQ(select(around), (Ids{1, 2, 3, 4, 5}));
    EXPECT_EQ(surface->draws, 1);
    EXPECT_EQ(decided->draws, 0);
}

// Too thin for any pixel's centre, too short for a line: nothing is drawn of them.
TEST_F(SelectionByBoxTest, WhatCoversNoPixelIsNotSelected)
{
    addOpaque(1, QRectF(10.1, 10.1, 0.1, 0.1));
    DrawnItem* thin = addSquare(2, QRectF(10, 10.1, 10, 0.1));
    thin->setDrawsOpaque(true);
    EXPECT_EQ(select(around), Ids{});
}

TEST_F(SelectionByBoxTest, APointAlwaysCoversAPixel)
{
    DrawnItem* item = add(1, GL_POINTS, {square(QRectF(10.2, 10.3, 1, 1)).front()});
    item->setDrawsOpaque(true);
    EXPECT_EQ(select(around), Ids{1});
    EXPECT_EQ(item->draws, 0);
}

// What no drawer draws is not selected, whatever it promises.
TEST_F(SelectionByBoxTest, PromisesCountOnlyWithADrawerThatDraws)
{
    constexpr int Broken = 1234, Foreign = 1235;
    auto* plain = new QOpenGLShaderProgram(scene.get());
    ASSERT_TRUE(plain->addShaderFromSourceCode(
        QOpenGLShader::Vertex,
        "#version 430 core\nlayout(location = 0) in vec3 p; void main() { gl_Position = "
        "vec4(p, 1); }"));
    ASSERT_TRUE(plain->addShaderFromSourceCode(QOpenGLShader::Fragment, "#version 430 core\nout vec4 c; "
                                                                        "void main() { c = vec4(1); }"));
    ASSERT_TRUE(plain->link());
    scene->addDefaultDrawer(
        Broken, std::make_unique<SequentialItem3dDrawer>(scene.get(), new QOpenGLShaderProgram(scene.get())));
    scene->addDefaultDrawer(Foreign, std::make_unique<SequentialItem3dDrawer>(scene.get(), plain));
    LONGID id = 0;
    for (const int type : {Broken, Foreign, DrawerType::WideLines}) {
        DrawnItem* item = addItem(++id, type);
        item->setDrawsOpaque(true);
        item->box = gmx::BoundingBox(glm::dvec3(-0.5, 0.3, 0), glm::dvec3(-0.4, 0.5, 0));
        (type == DrawerType::WideLines ? item->info.pointCount : item->info.lineCount) = 2;
    }
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{});
}

TEST_F(SelectionByBoxTest, InvisibleAndFilteredItemsAreNotSelected)
{
    addOpaque(1)->setVisible(false);
    addOpaque(2);
    EXPECT_EQ(select(around), Ids{2});
    SelectionOptions options;
    options.itemFilter = [](Drawable3dItem*) { return false; };
    EXPECT_EQ(select(around, options), Ids{});
}

TEST_F(SelectionByBoxTest, ABoxThatLeavesThePictureDecidesNothing)
{
    DrawnItem* item = addOpaque(1, QRectF(56, 10, 14, 5));
    EXPECT_EQ(select(QRectF(0, 0, 100, 100)), Ids{1});
    EXPECT_EQ(item->draws, 1);
    DrawnItem* before = add(2, GL_LINES, {{0.2f, 0.2f, -0.5f}, {0.2f, 0.3f, -1.5f}});
    before->setDrawsOpaque(true);
    EXPECT_EQ(select(QRectF(0, 0, 100, 100)), (Ids{1, 2}));
    EXPECT_EQ(before->draws, 1);
}

} // namespace
