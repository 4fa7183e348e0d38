#include "SelectionTest.h"

#include "tests/support/GlObjects.h"

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <framework/model/CFilterElement.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_transform.hpp>

#include <iterator>
#include <limits>
#include <map>
#include <random>

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

// What a selection keeps for the next one is that of the scene as it is then: squares of whole pixels come,
// go, move, hide and change their reach, and areas of whole pixels have those that they overlap.
TEST_F(SelectionByBoxTest, FollowsTheSceneFromOneSelectionToTheNext)
{
    struct Square
    {
        DrawnItem* item;
        QRect pixels;
        bool isShown;
    };
    constexpr int OtherType = 4321;
    std::mt19937 random(9);
    const auto whole = [&random](int from, int to) {
        return std::uniform_int_distribution<int>(from, to)(random);
    };
    CFilterElement others;
    others.setTypeAccepted(TestElement::Type, false);
    std::map<LONGID, Square> squares;
    LONGID last = 0;
    std::size_t found = 0;
    for (int step = 0; step < 400; ++step) {
        auto any = squares.begin();
        std::advance(any, squares.empty() ? 0 : whole(0, static_cast<int>(squares.size()) - 1));
        const int change = squares.size() < 20 ? 0 : whole(0, 4);
        if (change == 0) {
            const QRect pixels(whole(0, 56), whole(0, 40), whole(1, 8), whole(1, 8));
            const int type = whole(0, 2) == 0 ? OtherType : TestElement::Type;
            DrawnItem* item = add(++last, GL_TRIANGLES, square(pixels), Qt::white, type);
            squares[last] = {item, pixels, true};
        } else if (change == 1) {
            scene->removeElement(any->first);
            squares.erase(any);
        } else if (change == 2) {
            any->second.isShown = !any->second.isShown;
            static_cast<Drawable3dItem&>(*any->second.item).setVisible(any->second.isShown);
        } else if (change == 3) {
            const QPoint by = QPoint(whole(0, 56), whole(0, 40)) - any->second.pixels.topLeft();
            any->second.pixels.translate(by);
            const glm::dvec3 step3d(2.0 * by.x() / Size.width(), -2.0 * by.y() / Size.height(), 0.0);
            DrawnItem& item = *any->second.item;
            item.box = gmx::BoundingBox(item.box.getMin() + step3d, item.box.getMax() + step3d);
            static_cast<Drawable3dItem&>(item).setTransform(
                glm::translate(glm::mat4(1.0f), glm::vec3(step3d)), true);
        } else {
            any->second.item->setPixelReach(whole(0, 1) == 0 ? 0.0f : std::numeric_limits<float>::infinity());
        }
        const QRect area(whole(-5, 60), whole(-5, 44), whole(1, 40), whole(1, 40));
        SelectionOptions options;
        if (whole(0, 2) == 0) options.visibilityFilter = &others;
        Ids expected;
        for (const auto& [id, each] : squares)
            if (each.isShown && area.intersects(each.pixels) &&
                (!options.visibilityFilter || each.item->getVisibilityType() == OtherType))
                expected.insert(id);
        found += expected.size();
        ASSERT_EQ(select(QRectF(area), options), expected) << "step " << step;
    }
    EXPECT_GT(found, 400u);
}

// It is drawn, and so it is selected.
TEST_F(SelectionByBoxTest, AnItemMayBeWithADrawerOnly)
{
    DrawnItem* first = addSquare(1, QRectF(10, 10, 5, 5));
    TestElement element;
    class : public DrawnItem
    {
    public:
        using DrawnItem::DrawnItem;
        using DrawnItem::setDrawer;
    } unknown(&element, 2, DrawerType::Mono);
    unknown.drawing = add(3, GL_TRIANGLES, square(QRectF(40, 10, 5, 5)))->drawing;
    unknown.box = gmx::BoundingBox(glm::dvec3(-1, -1, 0), glm::dvec3(1, 1, 0));
    EXPECT_EQ(select(around), Ids{1});
    unknown.setDrawer(first->getDrawer());
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), (Ids{1, 2, 3}));
    EXPECT_EQ(select(around), Ids{1});
    scene->removeElement(1);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), (Ids{2, 3}));
    scene->makeCurrent();
    unknown.setDrawer(nullptr);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{3});
}

TEST_F(SelectionByBoxTest, WhereBoxesDecideNothingIsAskedOfTheDriver)
{
    for (LONGID id = 1; id < 5; ++id)
        addOpaque(id)->setPixelReach(1.0f);
    addOpaque(5, QRectF(40, 10, 6, 6))->setPixelReach(1.0f);
    EXPECT_EQ(select(around), (Ids{1, 2, 3, 4}));
    EXPECT_EQ(select(QRectF(13, 5, 20, 20)), (Ids{1, 2, 3, 4})) << "drawn, they cross the border";
    const auto bound = [this] {
        GLint name = -1;
        gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, 8, &name);
        return name;
    };
    scene->makeCurrent();
    EXPECT_NE(bound(), 0);
    gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 8, 0);
    EXPECT_EQ(select(around), (Ids{1, 2, 3, 4}));
    EXPECT_EQ(bound(), 0) << "no pass was begun";
}

TEST_F(SelectionByBoxTest, ManySelectionsLeaveAsManyObjectsAsOne)
{
    addOpaque(1);
    const auto frameBuffers = [this] {
        int count = 0;
        for (GLuint name = 1; name < 1000; ++name)
            count += gl->glIsFramebuffer(name) != 0;
        return count;
    };
    for (const SelectionMode mode : {Through, Visible})
        EXPECT_EQ(select(QRectF(13, 5, 20, 20), mode), Ids{1});
    scene->makeCurrent();
    const GlObjects objects = GlObjects::count(*gl);
    const int before = frameBuffers();
    for (int i = 0; i < 20; ++i)
        for (const SelectionMode mode : {Through, Visible})
            EXPECT_EQ(select(QRectF(13, 5, 10 + i % 3, 20), mode), Ids{1});
    EXPECT_EQ(frameBuffers(), before);
    EXPECT_EQ(GlObjects::count(*gl), objects);
}

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
