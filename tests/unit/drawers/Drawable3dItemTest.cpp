#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawers/DrawerType.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

using Items = std::vector<Drawable3dItem*>;

TEST(Drawable3dItem, IsUnboundVisibleAndAtItsPlaceAtFirst)
{
    TestItem item;
    EXPECT_EQ(item.getDrawer(), nullptr);
    EXPECT_EQ(item.scene(), nullptr);
    EXPECT_EQ(item.getTransform(), glm::mat4(1.0f));
    EXPECT_TRUE(item.isVisible());
    EXPECT_EQ(item.getDefaultDrawerType(), DrawerType::Mono);
    EXPECT_EQ(item.getDefaultDrawerType(), 922688512);
    EXPECT_EQ(item.getGlueMask(), 0xFFFFFFFFu);
    EXPECT_FALSE(item.isHighlighted());
    EXPECT_FALSE(item.hasTransparency());
}

TEST(Drawable3dItem, CombinesTransformsFromTheLeft)
{
    TestItem item;
    const glm::mat4 move = glm::translate(glm::mat4(1.0f), glm::vec3(1, 2, 3));
    item.setTransform(move, true);
    item.setTransform(move, true);
    EXPECT_EQ(glm::vec3(item.getTransform()[3]), glm::vec3(2, 4, 6));
    item.setTransform(glm::scale(glm::mat4(1.0f), glm::vec3(10.0f)), true);
    EXPECT_EQ(item.getTransform() * glm::vec4(0, 0, 0, 1), glm::vec4(20, 40, 60, 1));
    item.setTransform(move, false);
    EXPECT_EQ(item.getTransform(), move);
}

TEST(Drawable3dItem, DrawElementAndTheNumberedDrawReachTheItemsOwn)
{
    TestItem item;
    PaintContext context;
    context.stage = 7;
    item.drawElement(context);
    static_cast<Drawable3dPrimitive&>(item).draw(context, 3);
    EXPECT_EQ(item.draws, 2);
    EXPECT_EQ(item.lastContext.stage, 7);
}

TEST(Drawable3dItem, ChangingTheDrawerLeavesTheOldOne)
{
    TestDrawer first, second;
    TestItem item;
    item.setDrawer(&first);
    item.setDrawer(&second);
    EXPECT_TRUE(first.getItems().empty());
    EXPECT_EQ(second.getItems(), (Items{&item}));
}

TEST(Drawable3dItem, LeavesItsDrawerWhenDestroyed)
{
    TestDrawer drawer;
    {
        TestItem item;
        item.setDrawer(&drawer);
    }
    EXPECT_TRUE(drawer.getItems().empty());
}

TEST(Drawable3dItem, MovingTakesTheSlotOver)
{
    TestDrawer drawer;
    TestItem other;
    other.setDrawer(&drawer);
    auto source = std::make_unique<TestItem>();
    source->setDrawer(&drawer);
    source->setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(1, 0, 0)), false);
    source->setVisible(false);
    TestItem target(std::move(*source));
    EXPECT_EQ(drawer.getItems(), (Items{&other, &target}));
    EXPECT_EQ(target.getDrawer(), &drawer);
    EXPECT_FALSE(target.isVisible());
    EXPECT_EQ(target.getTransform()[3].x, 1.0f);
    EXPECT_EQ(source->getDrawer(), nullptr);
    EXPECT_EQ(source->scene(), nullptr);
    source.reset();
    EXPECT_EQ(drawer.getItems(), (Items{&other, &target})) << "destroying the source unregisters nothing";
}

TEST(Drawable3dItem, AMovedFromItemCanBeBoundAgain)
{
    TestDrawer drawer;
    TestItem source;
    source.setDrawer(&drawer);
    TestItem target(std::move(source));
    source.setDrawer(&drawer);
    EXPECT_EQ(drawer.getItems(), (Items{&target, &source}));
}

TEST(Drawable3dPrimitive, WithoutAContextThereAreNoVertices)
{
    TestItem item;
    EXPECT_TRUE(item.getVertices().empty());
    const glm::vec3 vertex = item.getVertex(0);
    EXPECT_TRUE(std::isnan(vertex.x) && std::isnan(vertex.y) && std::isnan(vertex.z));
    EXPECT_EQ(Drawable3dPrimitive::getGLFunctions(), nullptr);
}

TEST(Drawable3dPrimitive, DrawsNothingByDefault)
{
    TestItem item;
    const Drawable3dPrimitive::GeometryInfo info = item.getGeometryInfo();
    EXPECT_EQ(info.pointCount + info.lineCount + info.triangleCount, 0u);
    EXPECT_EQ(item.generateGeometry(), Drawable3dPrimitive::Geometry(0u, 0u, 0u));
}

} // namespace
