#include "SelectionTest.h"

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <framework/model/CFilterElement.h>

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

} // namespace
