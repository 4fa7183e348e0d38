#include "SelectionTest.h"

#include "tests/support/LogTrap.h"

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/scene/longestTargetSide.h>
#include <framework/model/CFilterElement.h>

#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLShaderProgram>

#include <limits>

namespace {

class SelectItemsTest : public SelectionTest
{
};

TEST_F(SelectItemsTest, FindTheItemsWithAPixelInTheArea)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    addSquare(2, QRectF(30, 10, 5, 5));
    EXPECT_EQ(select(QRectF(0, 0, 11, 11)), Ids{1});
    EXPECT_EQ(select(QRectF(0, 0, 10, 48)), Ids{});
    EXPECT_EQ(select(QRectF(14, 14, 17, 1)), (Ids{1, 2}));
    EXPECT_EQ(select(QRectF(15, 0, 15, 48)), Ids{}) << "between the two";
    EXPECT_EQ(select(QRectF(15, 15, 49, 33)), Ids{}) << "below, the origin being at the top";
}

TEST_F(SelectItemsTest, OfAPolygonAreThoseInsideByTheOddEvenRule)
{
    addSquare(1, QRectF(10, 10, 3, 3));
    addSquare(2, QRectF(30, 20, 3, 3));
    QPolygonF ring(
        {{2, 2}, {62, 2}, {62, 46}, {2, 46}, {2, 2}, {20, 15}, {45, 15}, {45, 35}, {20, 35}, {20, 15}});
    EXPECT_EQ(select(ring), Ids{1}) << "the second lies in the hole";
    EXPECT_EQ(select(QPolygonF({{2, 2}, {62, 2}, {62, 46}, {2, 46}})), (Ids{1, 2}));
    EXPECT_EQ(select(QPolygonF({{20, 2}, {62, 2}, {62, 46}, {20, 46}})), Ids{2});
}

TEST_F(SelectItemsTest, ThroughFindsWhatIsHiddenAndVisibleDoesNot)
{
    addSquare(1, QRectF(10, 10, 5, 5), 0.5f);
    addSquare(2, QRectF(8, 8, 20, 20), -0.5f);
    addSquare(3, QRectF(20, 20, 20, 20), 0.2f);
    const QRectF area(10, 10, 12, 12);
    EXPECT_EQ(select(area), (Ids{1, 2, 3}));
    EXPECT_EQ(select(area, Visible), Ids{2});
    EXPECT_EQ(select(QRectF(10, 10, 30, 30), Visible), (Ids{2, 3}));
}

TEST_F(SelectItemsTest, WhatHidesIsDrawnFirstOrLast)
{
    addSquare(1, QRectF(0, 0, 64, 48), -0.5f);
    addSquare(2, QRectF(10, 10, 5, 5), 0.5f);
    addSquare(3, QRectF(40, 10, 5, 5), 0.5f);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{1});
}

TEST_F(SelectItemsTest, OfItemsInOnePlaneTheLastIsSeen)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    addSquare(2, QRectF(10, 10, 5, 5));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{2});
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), (Ids{1, 2}));
}

TEST_F(SelectItemsTest, InsideWantsTheWholeItemInTheArea)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    addSquare(2, QRectF(12, 12, 20, 5));
    for (const SelectionMode mode : {Through, Visible}) {
        EXPECT_EQ(select(QRectF(8, 8, 12, 12), mode, Touching), (Ids{1, 2}));
        EXPECT_EQ(select(QRectF(8, 8, 12, 12), mode, Inside), Ids{1});
        EXPECT_EQ(select(QRectF(10, 10, 5, 5), mode, Inside), Ids{1}) << "exactly";
        EXPECT_EQ(select(QRectF(10, 10, 5, 4), mode, Inside), Ids{}) << "a row is missing";
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), mode, Inside), (Ids{1, 2}));
    }
}

TEST_F(SelectItemsTest, InsideAPolygonMeansNotInItsHole)
{
    addSquare(1, QRectF(4, 4, 8, 8));
    addSquare(2, QRectF(15, 20, 10, 3));
    QPolygonF ring(
        {{2, 2}, {62, 2}, {62, 46}, {2, 46}, {2, 2}, {20, 15}, {45, 15}, {45, 35}, {20, 35}, {20, 15}});
    EXPECT_EQ(select(ring, Through, Touching), (Ids{1, 2}));
    EXPECT_EQ(select(ring, Through, Inside), Ids{1});
}

TEST_F(SelectItemsTest, PartsBeyondThePictureLieOutside)
{
    const QRectF all(-100, -100, 300, 300);
    addSquare(1, QRectF(20, 20, 5, 5));
    addSquare(2, QRectF(60, 20, 20, 5));
    addSquare(3, QRectF(30, -5, 5, 10));
    // Before the near plane, behind the far plane.
    add(4, GL_LINES, {{0.2f, 0.2f, 0.0f}, {0.2f, 0.3f, -1.5f}});
    add(5, GL_LINES, {{-0.2f, 0.2f, 0.0f}, {-0.2f, 0.3f, 1.5f}});
    // In one part, far beyond what is drawn around the picture.
    std::vector<glm::vec3> parts = square(QRectF(5, 30, 4, 4));
    const std::vector<glm::vec3> far = square(QRectF(900, 30, 4, 4));
    parts.insert(parts.end(), far.begin(), far.end());
    add(6, GL_TRIANGLES, parts);
    for (const SelectionMode mode : {Through, Visible}) {
        EXPECT_EQ(select(all, mode, Touching), (Ids{1, 2, 3, 4, 5, 6}));
        EXPECT_EQ(select(all, mode, Inside), Ids{1});
    }
}

// Its vertices all lie in the picture, by a box that says less: one of a rotated view, for example.
TEST_F(SelectItemsTest, ABoxThatReachesOutIsNotTheItem)
{
    DrawnItem* item = addSquare(1, QRectF(2, 2, 60, 44));
    item->box = gmx::BoundingBox(glm::dvec3(-1.5, -1.5, -3.0), glm::dvec3(1.5, 1.5, 3.0));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Through, Inside), Ids{1});
    EXPECT_EQ(select(QRectF(0, 0, 61, 48), Through, Inside), Ids{});
    item->info = {}; // it gives no vertices
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Through, Inside), Ids{}) << "nothing says that it is inside";
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Through, Touching), Ids{1});
}

// A point of 9 pixels whose centre is 2 pixels away from the picture's border.
TEST_F(SelectItemsTest, PensThatReachBeyondThePictureLieOutside)
{
    for (const auto& [id, x] : {std::pair<LONGID, double>{1, 2.5}, {2, 20.5}}) {
        DrawnItem* item = add(id, GL_POINTS, {square(QRectF(x, 20.5, 1, 1)).back()});
        item->drawing = [this, draw = item->drawing](const PaintContext& context) {
            const int width = context.program->uniformLocation("pen_width");
            uniforms::set(*gl, width, 9.0f);
            draw(context);
            uniforms::set(*gl, width, 1.0f);
        };
    }
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Through, Touching), (Ids{1, 2}));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Through, Inside), Ids{2});
    EXPECT_EQ(select(QRectF(14, 14, 16, 16), Through, Inside), Ids{2});
    EXPECT_EQ(select(QRectF(18, 18, 5, 5), Through, Inside), Ids{}) << "the vertex alone is not the item";
}

// The part that the other square hides lies outside of the area.
TEST_F(SelectItemsTest, OfWhatIsSeenHiddenPartsCountForInside)
{
    addSquare(1, QRectF(10, 10, 20, 5), 0.5f);
    addSquare(2, QRectF(20, 5, 15, 15), -0.5f);
    EXPECT_EQ(select(QRectF(5, 5, 15, 20), Visible, Touching), Ids{1});
    EXPECT_EQ(select(QRectF(5, 5, 15, 20), Visible, Inside), Ids{});
    EXPECT_EQ(select(QRectF(5, 5, 26, 20), Visible, Inside), Ids{1});
}

TEST_F(SelectItemsTest, TakeAlphaOfAtLeastOneHalf)
{
    addSquare(1, QRectF(10, 10, 5, 5), 0.5f, QColor(255, 0, 0, 255));
    addSquare(2, QRectF(10, 10, 5, 5), 0.0f, QColor(255, 0, 0, 128));
    addSquare(3, QRectF(10, 10, 5, 5), -0.5f, QColor(255, 0, 0, 127));
    addSquare(4, QRectF(10, 10, 5, 5), -0.6f, QColor(255, 0, 0, 0));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), (Ids{1, 2}));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{2}) << "and what is fainter hides nothing";
}

TEST_F(SelectItemsTest, HighlightedItemsShowTheSelectionColour)
{
    DrawnItem* faint = addSquare(1, QRectF(10, 10, 5, 5), 0.0f, QColor(255, 0, 0, 10));
    elementOf(faint).setHighlighted(true);
    for (const SelectionMode mode : {Through, Visible})
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), mode), Ids{1});
}

TEST_F(SelectItemsTest, LeaveOutWhatIsNotDrawn)
{
    addSquare(1, QRectF(10, 10, 5, 5), 0.5f);
    addSquare(2, QRectF(10, 10, 5, 5), -0.5f)->setVisible(false);
    constexpr int OtherType = TestElement::Type + 1;
    add(3, GL_TRIANGLES, square(QRectF(10, 10, 5, 5), -0.6f), Qt::white, OtherType);
    CFilterElement filter;
    filter.setTypeAccepted(OtherType, false);
    for (const SelectionMode mode : {Through, Visible}) {
        SelectionOptions options;
        options.mode = mode;
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), options), mode == Through ? (Ids{1, 3}) : Ids{3});
        options.visibilityFilter = &filter;
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), options), Ids{1}) << "what is filtered hides nothing";
        options.visibilityFilter = nullptr;
        options.itemFilter = [](Drawable3dItem* item) { return static_cast<DrawnItem*>(item)->getId() != 3; };
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), options), Ids{1});
        options.itemFilter = [](Drawable3dItem*) { return true; };
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), options).count(2), 0u) << "invisible ones are never drawn";
    }
    scene->addAlwaysVisibleDrawer(OtherType);
    SelectionOptions options;
    options.visibilityFilter = &filter;
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), options), (Ids{1, 3}));
}

TEST_F(SelectItemsTest, IdentifiersHave64Bits)
{
    const LONGID large = (LONGID(7) << 32) + 1;
    addSquare(large, QRectF(10, 10, 5, 5));
    addSquare(1, QRectF(30, 10, 5, 5));
    addSquare(std::numeric_limits<LONGID>::max(), QRectF(50, 10, 5, 5));
    for (const SelectionMode mode : {Through, Visible}) {
        EXPECT_EQ(select(QRectF(0, 0, 20, 48), mode), Ids{large});
        EXPECT_EQ(select(QRectF(20, 0, 20, 48), mode), Ids{1});
        EXPECT_EQ(select(QRectF(40, 0, 20, 48), mode), Ids{std::numeric_limits<LONGID>::max()});
    }
}

// The drawable comes after the item, from the same drawer, and lies in the area: the item does not.
TEST_F(SelectItemsTest, WhatStandsForNoElementSetsNobodysBit)
{
    DrawnItem* item = addSquare(1, QRectF(10, 10, 5, 5));
    VertexItem drawable(GL_TRIANGLES, square(QRectF(30, 10, 5, 5)));
    drawable.setDrawer(item->getDrawer());
    scene->addLocalItem(std::make_unique<VertexItem>(GL_TRIANGLES, square(QRectF(30, 30, 5, 5))));
    for (const SelectionMode mode : {Through, Visible})
        for (const SelectionRule rule : {Touching, Inside}) {
            EXPECT_EQ(select(QRectF(25, 0, 39, 48), mode, rule), Ids{});
            EXPECT_EQ(select(QRectF(0, 0, 64, 48), mode, rule), Ids{1});
        }
    EXPECT_EQ(select(QRectF(0, 0, 20, 20), Through, Inside), Ids{1}) << "nor that of its being outside";
    scene->makeCurrent();
}

TEST_F(SelectItemsTest, WhatStandsForNoElementHides)
{
    DrawnItem* item = addSquare(1, QRectF(10, 10, 5, 5), 0.5f);
    addSquare(2, QRectF(40, 10, 5, 5), 0.5f);
    VertexItem drawable(GL_TRIANGLES, square(QRectF(8, 8, 10, 10)));
    drawable.setDrawer(item->getDrawer());
    scene->addLocalItem(std::make_unique<VertexItem>(GL_TRIANGLES, square(QRectF(38, 8, 10, 10))));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{});
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Through), (Ids{1, 2}));
    scene->makeCurrent();
}

TEST_F(SelectItemsTest, AnItemThatIsDrawnTwiceIsThereOnce)
{
    constexpr int TwoStages = 1234;
    auto composite = std::make_unique<CompositeDrawer>(scene.get());
    composite->addStage(1, DrawerType::Mono);
    composite->addStage(2, DrawerType::Mono);
    scene->addDefaultDrawer(TwoStages, std::move(composite));
    DrawnItem* item = addItem(1, TwoStages);
    VertexItem left(GL_TRIANGLES, square(QRectF(10, 10, 5, 5))),
        right(GL_TRIANGLES, square(QRectF(40, 10, 5, 5)));
    item->box = gmx::BoundingBox(glm::dvec3(-1, -1, 0), glm::dvec3(1, 1, 0));
    item->info.triangleCount = 4;
    item->drawing = [&](const PaintContext& context) {
        (context.stage == 1 ? left : right).drawElement(context);
    };
    for (const SelectionMode mode : {Through, Visible}) {
        EXPECT_EQ(scene->selectItems(view(), QRectF(0, 0, 64, 48), {mode}), std::vector<LONGID>{1});
        EXPECT_EQ(select(QRectF(35, 0, 29, 48), mode), Ids{1});
        EXPECT_EQ(select(QRectF(20, 0, 10, 48), mode), Ids{});
        EXPECT_EQ(select(QRectF(35, 0, 29, 48), mode, Inside), Ids{}) << "its other half lies elsewhere";
        EXPECT_EQ(select(QRectF(5, 5, 45, 15), mode, Inside), Ids{1});
    }
    scene->makeCurrent();
    item->drawing = nullptr;
}

TEST_F(SelectItemsTest, AreasWithoutPixelsHaveNothing)
{
    DrawnItem* item = addSquare(1, QRectF(0, 0, 64, 48));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const SelectionMode mode : {Through, Visible})
        for (const SelectionRule rule : {Touching, Inside}) {
            EXPECT_EQ(select(QRectF(64, 0, 10, 10), mode, rule), Ids{});
            EXPECT_EQ(select(QRectF(-10, 0, 10, 10), mode, rule), Ids{});
            EXPECT_EQ(select(QRectF(), mode, rule), Ids{});
            EXPECT_EQ(select(QPolygonF(), mode, rule), Ids{});
            EXPECT_EQ(select(QPolygonF(QVector<QPointF>{{5, 5}}), mode, rule), Ids{});
            EXPECT_EQ(select(QPolygonF(QVector<QPointF>{{5, 5}, {30, 5}}), mode, rule), Ids{});
            EXPECT_EQ(select(QRectF(nan, 0, 10, 10), mode, rule), Ids{});
            EXPECT_EQ(select(QPolygonF({{5, 5}, {nan, 5}, {20, 20}}), mode, rule), Ids{});
            EXPECT_EQ(scene->selectItems(paintContext(0, 0), QRectF(0, 0, 10, 10), {mode, rule}).size(), 0u);
        }
    EXPECT_EQ(item->draws, 0) << "and nothing is drawn for them";
}

TEST_F(SelectItemsTest, AreasOfOnePixelAndOfTwoPoints)
{
    addSquare(1, QRectF(10, 10, 1, 1));
    for (const SelectionMode mode : {Through, Visible}) {
        EXPECT_EQ(select(QRectF(10, 10, 1, 1), mode, Inside), Ids{1});
        EXPECT_EQ(select(QRectF(11, 10, 1, 1), mode), Ids{});
        EXPECT_EQ(select(QPolygonF(QVector<QPointF>{{8, 12}, {12, 8}}), mode, Inside), Ids{1});
        EXPECT_EQ(select(QPolygonF(QVector<QPointF>{{8, 10}, {12, 8}}), mode), Ids{});
    }
}

TEST_F(SelectItemsTest, RectanglesMayBeDrawnInAnyDirection)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    EXPECT_EQ(select(QRectF(20, 20, -12, -12)), Ids{1});
    EXPECT_EQ(select(QRectF(20, 20, -12, 12)), Ids{});
}

TEST_F(SelectItemsTest, ViewportsNeedNotBeginAtZero)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    PaintContext moved = view();
    moved.setViewport(QRect(QPoint(300, 200), Size));
    for (const SelectionMode mode : {Through, Visible})
        for (const SelectionRule rule : {Touching, Inside}) {
            EXPECT_EQ(scene->selectItems(moved, QRectF(10, 10, 5, 5), {mode, rule}), std::vector<LONGID>{1});
            EXPECT_TRUE(scene->selectItems(moved, QRectF(15, 10, 5, 5), {mode, rule}).empty());
        }
}

TEST_F(SelectItemsTest, OnlyItemsNearTheAreaAreDrawn)
{
    std::vector<DrawnItem*> items;
    for (int i = 0; i < 10; ++i)
        items.push_back(addSquare(i + 1, QRectF(1 + 6 * i, 10, 4, 4)));
    for (DrawnItem* item : items)
        item->setPixelReach(0.0f);
    for (const SelectionMode mode : {Through, Visible}) {
        EXPECT_EQ(select(QRectF(20, 0, 6, 48), mode), (Ids{4, 5}));
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(items[std::size_t(i)]->draws, i == 3 || i == 4 ? 1 : 0) << i;
            items[std::size_t(i)]->draws = 0;
        }
    }
    // A lasso around the area: what lies in its bounding rectangle but not in it is not drawn.
    EXPECT_EQ(select(QPolygonF({{0, 0}, {64, 0}, {64, 48}, {58, 48}, {58, 4}, {0, 4}})), Ids{10});
    for (DrawnItem* item : items)
        EXPECT_EQ(item->draws, item->getId() == 10 ? 1 : 0) << item->getId();
}

TEST_F(SelectItemsTest, ItemsThatDrawBeyondTheirBoxesAreFound)
{
    DrawnItem* item = addSquare(1, QRectF(20, 20, 5, 5));
    item->box = gmx::BoundingBox(glm::dvec3(-0.9, 0.9, 0.0), glm::dvec3(-0.9, 0.9, 0.0)); // at (3.2, 2.4)
    item->setPixelReach(10.0f);
    EXPECT_EQ(select(QRectF(20, 20, 5, 5)), Ids{});
    item->setPixelReach(30.0f);
    EXPECT_EQ(select(QRectF(20, 20, 5, 5)), Ids{1});
    item->setPixelReach(std::numeric_limits<float>::infinity());
    EXPECT_EQ(select(QRectF(20, 20, 5, 5)), Ids{1});
    EXPECT_EQ(select(QRectF(20, 20, 5, 5), Through, Inside), Ids{1});
}

TEST_F(SelectItemsTest, ItemsWithoutAValidBoxAreDrawn)
{
    DrawnItem* item = addSquare(1, QRectF(20, 20, 5, 5));
    for (const gmx::BoundingBox& box :
         {gmx::BoundingBox(),
          gmx::BoundingBox(glm::dvec3(std::numeric_limits<double>::quiet_NaN()), glm::dvec3(1))}) {
        item->box = box;
        EXPECT_EQ(select(QRectF(20, 20, 5, 5), Through, Inside), Ids{1}) << "by its vertices";
        EXPECT_EQ(select(QRectF(20, 20, 5, 5), Visible), Ids{1});
        EXPECT_EQ(select(QRectF(30, 20, 5, 5)), Ids{});
    }
}

// --- what boxes decide

class SelectByBoxTest : public SelectionTest
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

TEST_F(SelectByBoxTest, AnOpaqueItemInTheAreaIsNotDrawn)
{
    DrawnItem* item = addOpaque(1);
    EXPECT_EQ(select(around), Ids{1});
    EXPECT_EQ(item->draws, 0);
    EXPECT_EQ(select(QRectF(5, 5, 8, 15)), Ids{1});
    EXPECT_EQ(item->draws, 1) << "its box crosses the border";
    EXPECT_EQ(select(around, Visible), Ids{1});
    EXPECT_EQ(item->draws, 2) << "something might hide it";
}

TEST_F(SelectByBoxTest, InsideThereIsNothingToDrawEither)
{
    DrawnItem* item = addOpaque(1);
    item->setPixelReach(2.0f);
    EXPECT_EQ(select(around, Through, Inside), Ids{1});
    EXPECT_EQ(item->draws, 0);
}

TEST_F(SelectByBoxTest, OthersAreDrawn)
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
TEST_F(SelectByBoxTest, WhatCoversNoPixelIsNotSelected)
{
    addOpaque(1, QRectF(10.1, 10.1, 0.1, 0.1));
    DrawnItem* thin = addSquare(2, QRectF(10, 10.1, 10, 0.1));
    thin->setDrawsOpaque(true);
    EXPECT_EQ(select(around), Ids{});
}

TEST_F(SelectByBoxTest, APointAlwaysCoversAPixel)
{
    DrawnItem* item = add(1, GL_POINTS, {square(QRectF(10.2, 10.3, 1, 1)).front()});
    item->setDrawsOpaque(true);
    EXPECT_EQ(select(around), Ids{1});
    EXPECT_EQ(item->draws, 0);
}

// What no drawer draws is not selected, whatever it promises.
TEST_F(SelectByBoxTest, PromisesCountOnlyWithADrawerThatDraws)
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

TEST_F(SelectByBoxTest, InvisibleAndFilteredItemsAreNotSelected)
{
    addOpaque(1)->setVisible(false);
    addOpaque(2);
    EXPECT_EQ(select(around), Ids{2});
    SelectionOptions options;
    options.itemFilter = [](Drawable3dItem*) { return false; };
    EXPECT_EQ(select(around, options), Ids{});
}

TEST_F(SelectByBoxTest, ABoxThatLeavesThePictureDecidesNothing)
{
    DrawnItem* item = addOpaque(1, QRectF(56, 10, 14, 5));
    EXPECT_EQ(select(QRectF(0, 0, 100, 100)), Ids{1});
    EXPECT_EQ(item->draws, 1);
    DrawnItem* before = add(2, GL_LINES, {{0.2f, 0.2f, -0.5f}, {0.2f, 0.3f, -1.5f}});
    before->setDrawsOpaque(true);
    EXPECT_EQ(select(QRectF(0, 0, 100, 100)), (Ids{1, 2}));
    EXPECT_EQ(before->draws, 1);
}

// --- what a selection leaves behind

TEST_F(SelectItemsTest, LeaveTheCallersContextCurrent)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    QOffscreenSurface surface;
    surface.setFormat(scene->getContext().format());
    surface.create();
    QOpenGLContext other;
    other.setFormat(scene->getContext().format());
    other.setShareContext(QOpenGLContext::globalShareContext());
    ASSERT_TRUE(other.create());
    ASSERT_TRUE(other.makeCurrent(&surface));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
    EXPECT_EQ(QOpenGLContext::currentContext(), &other);
    other.doneCurrent();
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    scene->makeCurrent();
}

TEST_F(SelectItemsTest, LeaveTheStateAsItWas)
{
    addSquare(1, QRectF(-5, 10, 40, 5));
    RenderTarget target(*gl, QSize(20, 10));
    for (const bool on : {true, false}) {
        target.bind();
        gl->glViewport(1, 2, 3, 4);
        gl->glScissor(5, 6, 7, 8);
        for (const GLenum capability : {GL_SCISSOR_TEST, GL_BLEND, GL_DEPTH_TEST})
            on ? gl->glEnable(capability) : gl->glDisable(capability);
        gl->glDepthMask(on);
        gl->glDepthFunc(on ? GL_GREATER : GL_ALWAYS);
        gl->glColorMask(on, !on, on, !on);
        const auto state = [this] {
            std::vector<GLint> values;
            for (const GLenum name :
                 {GL_DRAW_FRAMEBUFFER_BINDING, GL_READ_FRAMEBUFFER_BINDING, GL_VIEWPORT, GL_SCISSOR_BOX,
                  GL_SCISSOR_TEST, GL_BLEND, GL_DEPTH_TEST, GL_DEPTH_WRITEMASK, GL_DEPTH_FUNC,
                  GL_COLOR_WRITEMASK, GL_RENDERBUFFER_BINDING, GL_SHADER_STORAGE_BUFFER_BINDING,
                  GL_VERTEX_ARRAY_BINDING}) {
                GLint value[4] = {0, 0, 0, 0};
                gl->glGetIntegerv(name, value);
                values.insert(values.end(), value, value + 4);
            }
            return values;
        };
        const std::vector<GLint> before = state();
        for (const SelectionMode mode : {Through, Visible})
            for (const SelectionRule rule : {Touching, Inside}) {
                select(QRectF(0, 0, 64, 48), mode, rule);
                EXPECT_EQ(state(), before);
            }
        gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        gl->glDepthMask(GL_TRUE);
        gl->glDisable(GL_SCISSOR_TEST);
    }
    Scene3d::initializeGLCommon(gl);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{1});
}

// Whatever state a host left the scene's context in.
TEST_F(SelectItemsTest, DependOnNoStateOfTheContext)
{
    addSquare(1, QRectF(10, 10, 5, 5), 0.5f);
    addSquare(2, QRectF(8, 8, 20, 20), -0.5f);
    gl->glDisable(GL_DEPTH_TEST);
    gl->glDepthFunc(GL_NEVER);
    gl->glDepthMask(GL_FALSE);
    gl->glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    gl->glEnable(GL_SCISSOR_TEST);
    gl->glScissor(0, 0, 1, 1);
    gl->glEnable(GL_BLEND);
    gl->glBlendFunc(GL_ZERO, GL_ZERO);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), (Ids{1, 2}));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{2});
    gl->glDisable(GL_SCISSOR_TEST);
    gl->glDepthMask(GL_TRUE);
    gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    Scene3d::initializeGLCommon(gl);
}

TEST_F(SelectItemsTest, ViewportsTooLargeForTheDriverAreSaidToBe)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    const int side = longestTargetSide(*gl);
    EXPECT_TRUE(scene->selectItems(paintContext(side + 1, 4), QRectF(0, 0, 4, 4), {}).empty());
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.front().contains(QString::number(side))) << lines.front().toStdString();
}

TEST_F(SelectItemsTest, OfABufferThatCannotBeMappedAreNone)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    ASSERT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
    GLint name = 0;
    gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, 9, &name);
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(name));
    ASSERT_NE(gl->glMapBuffer(GL_COPY_WRITE_BUFFER, GL_READ_ONLY), nullptr);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{});
    EXPECT_FALSE(debug->take().isEmpty());
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(name));
    gl->glUnmapBuffer(GL_COPY_WRITE_BUFFER);
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
}

TEST_F(SelectItemsTest, OfAnEmptySceneAreNone)
{
    for (const SelectionMode mode : {Through, Visible})
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), mode, Inside), Ids{});
}

TEST_F(SelectItemsTest, ProviderIsMadeAtTheFirstRequest)
{
    EXPECT_FALSE(scene->isHasItemSelectionProvider());
    IItem3dSelectionProvider* provider = scene->getItemSelectionProvider();
    ASSERT_NE(provider, nullptr);
    EXPECT_TRUE(scene->isHasItemSelectionProvider());
    EXPECT_EQ(scene->getItemSelectionProvider(), provider);
}

} // namespace
