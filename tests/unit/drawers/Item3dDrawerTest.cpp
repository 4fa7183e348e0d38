#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawers/ContextualItem3dDrawer.h>
#include <Viewer3dModule/drawers/Item3dDrawerSaver.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_transform.hpp>

namespace {

using Items = std::vector<Drawable3dItem*>;
using Indices = std::vector<int>;

glm::mat4 translation(float x, float y, float z)
{
    return glm::translate(glm::mat4(1.0f), glm::vec3(x, y, z));
}

TEST(PaintContext, HasTheDefaultsOfAPlainPass)
{
    const PaintContext context;
    EXPECT_EQ(context.stage, 0);
    EXPECT_EQ(context.drawMode, 0);
    EXPECT_EQ(context.primitives, 7);
    EXPECT_EQ(context.passFlags, 0);
    EXPECT_EQ(context.view, glm::mat4(1.0f));
    EXPECT_EQ(context.projection, glm::mat4(1.0f));
    EXPECT_EQ(context.viewport, glm::mat4(1.0f));
    EXPECT_TRUE(context.viewportRect.isNull());
    EXPECT_EQ(context.vertexArray, 0u);
    EXPECT_EQ(context.scene, nullptr);
    EXPECT_EQ(context.program, nullptr);
    EXPECT_EQ(context.drawer, nullptr);
    EXPECT_TRUE(context.viewName.empty());
    EXPECT_EQ(context.extra1, nullptr);
    EXPECT_EQ(context.extra2, nullptr);
}

TEST(PaintContext, ViewportMapsToPixelsFromTheTopLeft)
{
    PaintContext context;
    context.setViewport(QRect(10, 20, 200, 100));
    EXPECT_EQ(context.viewportRect, QRect(10, 20, 200, 100));
    const auto pixel = [&](float x, float y) {
        return glm::vec2(context.viewport * glm::vec4(x, y, 0.25f, 1.0f));
    };
    EXPECT_EQ(pixel(-1, 1), glm::vec2(10, 20));
    EXPECT_EQ(pixel(1, -1), glm::vec2(210, 120));
    EXPECT_EQ(pixel(0, 0), glm::vec2(110, 70));
    EXPECT_EQ((context.viewport * glm::vec4(0, 0, 0.25f, 1)).z, 0.25f);
}

TEST(Item3dDrawer, RegistersItemsInOrderAndTellsOfEach)
{
    TestDrawer drawer;
    TestItem a, b;
    a.setDrawer(&drawer);
    b.setDrawer(&drawer);
    EXPECT_EQ(drawer.getItems(), (Items{&a, &b}));
    EXPECT_EQ(drawer.updates, (Indices{0, 1}));
    EXPECT_EQ(a.getDrawer(), &drawer);
    EXPECT_EQ(a.scene(), nullptr);
}

TEST(Item3dDrawer, AddingARegisteredItemOnlyUpdatesIt)
{
    TestDrawer drawer;
    TestItem a, b;
    a.setDrawer(&drawer);
    b.setDrawer(&drawer);
    drawer.updates.clear();
    EXPECT_EQ(drawer.addItem(&b), 1);
    EXPECT_EQ(drawer.getItems().size(), 2u);
    EXPECT_EQ(drawer.updates, (Indices{1}));
}

TEST(Item3dDrawer, RemovingTheLastItemLeavesTheOthersInPlace)
{
    TestDrawer drawer;
    TestItem a, b, c;
    for (TestItem* item : {&a, &b, &c})
        item->setDrawer(&drawer);
    drawer.updates.clear();
    c.setDrawer(nullptr);
    EXPECT_EQ(drawer.getItems(), (Items{&a, &b}));
    EXPECT_EQ(drawer.updates, (Indices{2}));
}

TEST(Item3dDrawer, RemovingAnItemMovesTheLastIntoItsSlot)
{
    TestDrawer drawer;
    TestItem a, b, c;
    for (TestItem* item : {&a, &b, &c})
        item->setDrawer(&drawer);
    drawer.updates.clear();
    a.setDrawer(nullptr);
    EXPECT_EQ(drawer.getItems(), (Items{&c, &b}));
    EXPECT_EQ(drawer.updates, (Indices{0}));
    drawer.updates.clear();
    drawer.Item3dDrawer::updateItem(&c);
    EXPECT_EQ(drawer.updates, (Indices{0})) << "the moved item knows its new index";
}

TEST(Item3dDrawer, RemovingAnIndexOutOfRangeDoesNothing)
{
    TestDrawer drawer;
    TestItem a;
    a.setDrawer(&drawer);
    drawer.updates.clear();
    drawer.removeItem(-1);
    drawer.removeItem(1);
    EXPECT_EQ(drawer.getItems().size(), 1u);
    EXPECT_TRUE(drawer.updates.empty());
}

TEST(Item3dDrawer, AChildSharesTheRegistryOfItsTopmostAncestor)
{
    TestDrawer parent, child, grandchild;
    parent.addChildDrawer(&child);
    grandchild.setParentDrawer(&child);
    TestItem a;
    a.setDrawer(&grandchild);
    EXPECT_EQ(parent.getItems(), (Items{&a}));
    EXPECT_EQ(&grandchild.getItems(), &parent.getItems());
    EXPECT_EQ(parent.updates, (Indices{0}));
    EXPECT_EQ(child.updates, (Indices{0}));
    EXPECT_EQ(grandchild.updates, (Indices{0}));
    a.setDrawer(nullptr);
    EXPECT_TRUE(parent.getItems().empty());
    EXPECT_EQ(grandchild.updates, (Indices{0, 0}));
}

TEST(Item3dDrawer, ItemsOutliveTheirDrawer)
{
    TestItem a;
    {
        TestDrawer drawer;
        a.setDrawer(&drawer);
    }
    EXPECT_EQ(a.getDrawer(), nullptr);
    TestDrawer next;
    a.setDrawer(&next);
    EXPECT_EQ(next.getItems(), (Items{&a})) << "an item whose drawer is gone counts as unregistered";
}

TEST(Item3dDrawer, KeepsTheModelMatrixWithoutAProgram)
{
    TestDrawer drawer;
    const PaintContext context;
    drawer.setTransform(context, translation(1, 0, 0), false);
    drawer.setTransform(context, glm::scale(glm::mat4(1.0f), glm::vec3(2.0f)), true);
    // The second applies to vertices first.
    EXPECT_EQ(drawer.getTransform() * glm::vec4(1, 0, 0, 1), glm::vec4(3, 0, 0, 1));
}

TEST(Item3dDrawer, SavesAndRestoresMatricesAsAStack)
{
    TestDrawer drawer;
    const PaintContext context;
    drawer.restoreTransformState(context); // nothing saved: nothing happens
    drawer.saveTransformState();
    drawer.translate(context, glm::vec3(5, 0, 0));
    drawer.saveTransformState();
    drawer.rotate(context, glm::half_pi<float>(), glm::vec3(0, 0, 1));
    drawer.scale(context, glm::vec3(2, 3, 4));
    const glm::vec4 mapped = drawer.getTransform() * glm::vec4(1, 1, 1, 1);
    EXPECT_NEAR(mapped.x, 5 - 3, 1e-6);
    EXPECT_NEAR(mapped.y, 2, 1e-6);
    EXPECT_NEAR(mapped.z, 4, 1e-6);
    drawer.restoreTransformState(context);
    EXPECT_EQ(drawer.getTransform(), translation(5, 0, 0));
    drawer.restoreTransformState(context);
    EXPECT_EQ(drawer.getTransform(), glm::mat4(1.0f));
}

TEST(ContextualItem3dDrawer, ForwardsToTheDrawerOfTheContext)
{
    TestDrawer drawer;
    PaintContext context;
    context.drawer = &drawer;
    const ContextualItem3dDrawer contextual = ContextualItem3dDrawer::fromContext(context);
    EXPECT_EQ(&*contextual, &drawer);
    {
        const Item3dDrawerSaver saver(contextual);
        contextual.translate(glm::vec3(1, 2, 3));
        EXPECT_EQ(contextual.getTransform(), glm::translate(glm::dmat4(1.0), glm::dvec3(1, 2, 3)));
        contextual.setTransform(glm::mat4(1.0f), false);
        contextual.scale(glm::vec3(2.0f));
        EXPECT_EQ(contextual.getTransform() * glm::dvec4(1, 0, 0, 1), glm::dvec4(2, 0, 0, 1));
        contextual.rotate(glm::half_pi<float>(), glm::vec3(0, 0, 1));
        EXPECT_NEAR((contextual.getTransform() * glm::dvec4(1, 0, 0, 1)).y, 2.0, 1e-6);
    }
    EXPECT_EQ(drawer.getTransform(), glm::mat4(1.0f));
    EXPECT_EQ(drawer.asContextual(context).operator->(), &drawer);
}

TEST(SequentialItem3dDrawer, ACloneHasTheProgramButNoItems)
{
    QOpenGLShaderProgram program;
    SequentialItem3dDrawer drawer(nullptr, &program);
    TestItem a;
    a.setDrawer(&drawer);
    const std::unique_ptr<Item3dDrawer> clone = drawer.clone();
    EXPECT_TRUE(clone->getItems().empty());
    EXPECT_EQ(dynamic_cast<SequentialItem3dDrawer&>(*clone).getDefaultProgram(), &program);
}

} // namespace
