#include <viewer/window/ElementSelection.h>
#include <viewer/window/FenceNodeTool.h>
#include <viewer/window/PolygonTool.h>
#include <viewer/window/RectangleTool.h>
#include <viewer/window/SphereTool.h>

#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <gtest/gtest.h>

// The window's tools as state machines, and the selection that they make.

namespace {

constexpr Qt::KeyboardModifiers none = Qt::NoModifier;

/// Hears what a tool for areas says.
struct AreaEar
{
    explicit AreaEar(AreaTool& tool)
    {
        QObject::connect(&tool, &AreaTool::areaChosen,
                         [this](const QPolygonF& area, Qt::KeyboardModifiers modifiers) {
                             areas.push_back(area);
                             keys = modifiers;
                         });
        QObject::connect(&tool, &AreaTool::areaCancelled, [this] { ++cancelled; });
        QObject::connect(&tool, &ViewTool::changed, [this] { ++changes; });
    }
    std::vector<QPolygonF> areas;
    Qt::KeyboardModifiers keys;
    int cancelled = 0;
    int changes = 0;
};

void click(ViewTool& tool, const QPointF& place)
{
    EXPECT_TRUE(tool.press(place, none));
    tool.release(place, none);
}

} // namespace

// --- rectangle

TEST(RectangleTool, GivesTheRectangleBetweenPressAndRelease)
{
    RectangleTool tool;
    const AreaEar ear(tool);
    EXPECT_TRUE(tool.sketch().isEmpty());
    EXPECT_TRUE(tool.press({50, 40}, none));
    tool.drag({20, 60});
    EXPECT_EQ(tool.sketch().boundingRect(), QRectF(20, 40, 30, 20));
    tool.release({10, 70}, Qt::ShiftModifier);
    ASSERT_EQ(ear.areas.size(), 1u);
    EXPECT_EQ(ear.areas[0], QPolygonF({{10, 40}, {50, 40}, {50, 70}, {10, 70}}));
    EXPECT_EQ(ear.keys, Qt::ShiftModifier);
    EXPECT_TRUE(tool.sketch().isEmpty());
    tool.drag({0, 0}); // nothing is drawn now
    tool.release({0, 0}, none);
    EXPECT_EQ(ear.areas.size(), 1u);
}

TEST(RectangleTool, ClickTakesWhatIsNear)
{
    RectangleTool tool;
    const AreaEar ear(tool);
    click(tool, {50, 40});
    ASSERT_EQ(ear.areas.size(), 1u);
    EXPECT_EQ(ear.areas[0].boundingRect(), QRectF(47, 37, 6, 6));
}

TEST(RectangleTool, CanBeCancelledWhileItIsDrawn)
{
    RectangleTool tool;
    const AreaEar ear(tool);
    EXPECT_FALSE(tool.cancel());
    tool.press({50, 40}, none);
    EXPECT_TRUE(tool.cancel());
    EXPECT_EQ(ear.cancelled, 1);
    tool.release({90, 90}, none);
    EXPECT_TRUE(ear.areas.empty());
}

// --- polygon

TEST(PolygonTool, TakesCornersUntilADoubleClick)
{
    PolygonTool tool;
    const AreaEar ear(tool);
    click(tool, {10, 10});
    click(tool, {90, 10});
    tool.hover({60, 60});
    EXPECT_EQ(tool.sketch(), QPolygonF({{10, 10}, {90, 10}, {60, 60}}));
    tool.finish(none); // two corners are no polygon
    EXPECT_TRUE(ear.areas.empty());
    click(tool, {90, 80});
    tool.finish(Qt::ControlModifier);
    tool.release({90, 80}, none); // of the second click
    ASSERT_EQ(ear.areas.size(), 1u);
    EXPECT_EQ(ear.areas[0], QPolygonF({{10, 10}, {90, 10}, {90, 80}}));
    EXPECT_EQ(ear.keys, Qt::ControlModifier);
    EXPECT_TRUE(tool.sketch().isEmpty());
}

TEST(PolygonTool, DragIsALassoThatEndsWithIt)
{
    PolygonTool tool;
    const AreaEar ear(tool);
    EXPECT_TRUE(tool.press({10, 10}, none));
    for (int i = 1; i <= 20; ++i)
        tool.drag({10.0 + i, 10}); // a point every 4 pixels
    tool.drag({30, 40});
    tool.release({10, 40}, Qt::ShiftModifier);
    ASSERT_EQ(ear.areas.size(), 1u);
    EXPECT_EQ(ear.areas[0],
              QPolygonF({{10, 10}, {14, 10}, {18, 10}, {22, 10}, {26, 10}, {30, 10}, {30, 40}, {10, 40}}));
    EXPECT_EQ(ear.keys, Qt::ShiftModifier);
}

TEST(PolygonTool, ShakyClickIsNoLasso)
{
    PolygonTool tool;
    const AreaEar ear(tool);
    tool.press({10, 10}, none);
    tool.drag({12, 11});
    tool.release({13, 11}, none);
    EXPECT_EQ(tool.sketch().size(), 2); // a corner and the mouse
    EXPECT_TRUE(ear.areas.empty());
}

TEST(PolygonTool, DragBetweenClicksAddsToThePolygon)
{
    PolygonTool tool;
    const AreaEar ear(tool);
    click(tool, {10, 10});
    tool.press({50, 10}, none);
    tool.drag({60, 20});
    tool.release({60, 30}, none);
    EXPECT_TRUE(ear.areas.empty());
    tool.finish(none);
    ASSERT_EQ(ear.areas.size(), 1u);
    EXPECT_EQ(ear.areas[0], QPolygonF({{10, 10}, {50, 10}, {60, 20}, {60, 30}}));
}

TEST(PolygonTool, StepsBackCornerByCorner)
{
    PolygonTool tool;
    const AreaEar ear(tool);
    tool.stepBack();
    click(tool, {10, 10});
    click(tool, {90, 10});
    tool.stepBack();
    tool.hover({10, 10});
    EXPECT_EQ(tool.sketch(), QPolygonF({{10, 10}}));
    tool.stepBack();
    EXPECT_EQ(ear.cancelled, 1);
    EXPECT_FALSE(tool.cancel());
}

// --- sphere

TEST(SphereTool, GoesFromItsCentreAsFarAsTheMouse)
{
    SphereTool tool([](const QPointF& place) { return glm::dvec3(place.x(), place.y(), 7.0); },
                    [](const glm::dvec3& from, const QPointF& place) { return place.x() - from.x; });
    std::vector<double> changed, chosen;
    int cancelled = 0;
    QObject::connect(&tool, &SphereTool::sphereChanged, [&](const glm::dvec3& center, double radius) {
        EXPECT_EQ(center, glm::dvec3(10.0, 20.0, 7.0));
        changed.push_back(radius);
    });
    QObject::connect(&tool, &SphereTool::sphereChosen,
                     [&](const glm::dvec3&, double radius) { chosen.push_back(radius); });
    QObject::connect(&tool, &SphereTool::sphereCancelled, [&] { ++cancelled; });

    EXPECT_TRUE(tool.press({10, 20}, none));
    tool.drag({10, 20}); // no size yet
    tool.drag({15, 20});
    tool.release({18, 20}, none);
    EXPECT_EQ(changed, std::vector<double>{5.0});
    EXPECT_EQ(chosen, std::vector<double>{8.0});
    tool.drag({30, 20});
    EXPECT_EQ(changed.size(), 1u);

    tool.press({10, 20}, none); // a click has no size
    tool.release({10, 20}, none);
    EXPECT_EQ(cancelled, 1);
    tool.press({10, 20}, none);
    EXPECT_TRUE(tool.cancel());
    EXPECT_EQ(cancelled, 2);
    EXPECT_FALSE(tool.cancel());
    EXPECT_EQ(chosen.size(), 1u);
}

// --- nodes of a fence

namespace {

class FakeHandles : public FenceNodeTool::Handles
{
public:
    std::vector<std::optional<QPointF>> places() const override
    {
        return {QPointF(10, 10), std::nullopt, QPointF(20, 10)};
    }
    std::size_t moveNode(std::size_t node, const QPointF& place) override
    {
        moves.emplace_back(node, place);
        return nodeAfterMove.value_or(node);
    }
    void endMove(bool keep) override { ends.push_back(keep); }

    std::vector<std::pair<std::size_t, QPointF>> moves;
    std::vector<bool> ends;
    std::optional<std::size_t> nodeAfterMove;
};

} // namespace

TEST(FenceNodeTool, TakesTheNearestNodeInReachOnly)
{
    FakeHandles handles;
    FenceNodeTool tool(handles);
    EXPECT_FALSE(tool.press({10, 19}, none));
    EXPECT_FALSE(tool.cancel());
    EXPECT_TRUE(tool.press({16, 10}, none)); // nearer to the last one
    tool.drag({17, 30});
    tool.release({17, 31}, none);
    ASSERT_EQ(handles.moves.size(), 1u);
    EXPECT_EQ(handles.moves[0], std::make_pair(std::size_t(2), QPointF(17, 30)));
    EXPECT_EQ(handles.ends, std::vector<bool>{true});
}

TEST(FenceNodeTool, GoesOnWithTheNodeThatTookThePlaceOfItsOwn)
{
    FakeHandles handles;
    FenceNodeTool tool(handles);
    tool.press({10, 10}, none);
    handles.nodeAfterMove = 2;
    tool.drag({11, 11});
    tool.drag({12, 12});
    EXPECT_EQ(handles.moves[1].first, 2u);
    EXPECT_TRUE(tool.cancel());
    EXPECT_EQ(handles.ends, std::vector<bool>{false});
}

TEST(FenceNodeTool, ClickMovesNothing)
{
    FakeHandles handles;
    FenceNodeTool tool(handles);
    tool.press({10, 10}, none);
    tool.release({10, 10}, none);
    EXPECT_TRUE(handles.moves.empty());
    EXPECT_TRUE(handles.ends.empty());
}

// --- the selection

namespace {

struct Selected : public ::testing::Test
{
    Selected()
    {
        CModelElementManager* manager = project.getModel()->getCreateItemManager(FeatureElement::Type);
        for (int i = 0; i < 4; ++i)
            ids.push_back(manager->addItem(std::make_unique<FeatureElement>())->getId());
    }
    /// Numbers of the elements that are highlighted.
    std::vector<int> highlighted() const
    {
        std::vector<int> numbers;
        for (int i = 0; i < 4; ++i)
            if (project.getModel()->getElement(ids[static_cast<std::size_t>(i)])->isHighlighted())
                numbers.push_back(i);
        return numbers;
    }
    CProject project;
    std::vector<LONGID> ids;
    ElementSelection selection{*project.getModel(), nullptr};
};

} // namespace

TEST_F(Selected, ReplacesAddsAndRemoves)
{
    int changes = 0;
    QObject::connect(&selection, &ElementSelection::changed, [&changes] { ++changes; });
    selection.change({ids[0], ids[1]}, ElementSelection::Replace);
    EXPECT_EQ(highlighted(), std::vector<int>({0, 1}));
    selection.change({ids[1], ids[2]}, ElementSelection::Replace);
    EXPECT_EQ(highlighted(), std::vector<int>({1, 2}));
    selection.change({ids[2], ids[3]}, ElementSelection::Add);
    EXPECT_EQ(highlighted(), std::vector<int>({1, 2, 3}));
    selection.change({ids[0], ids[2]}, ElementSelection::Remove);
    EXPECT_EQ(highlighted(), std::vector<int>({1, 3}));
    EXPECT_EQ(selection.ids(), std::set<LONGID>({ids[1], ids[3]}));
    selection.change({}, ElementSelection::Replace);
    EXPECT_TRUE(highlighted().empty());
    EXPECT_EQ(changes, 5);
}

TEST_F(Selected, ForgetsElementsThatGoAndKnowsNoOthers)
{
    selection.change({ids[0], ids[1], 12345}, ElementSelection::Replace);
    EXPECT_EQ(selection.ids().size(), 2u);
    project.getModel()->getItemManager(FeatureElement::Type)->removeItem(ids[0]);
    EXPECT_EQ(selection.ids(), std::set<LONGID>({ids[1]}));
}
