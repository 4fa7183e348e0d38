// What a view leaves out, and how it learns of changes.
#include "tests/gl/glyphs/GlyphsTest.h"
#include "tests/gl/instanced/InstancedTest.h"
#include "tests/gl/selection/SelectionTest.h"

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/scene/ViewCulling.h>

#include <limits>

namespace {

/// An item that counts how often its box is asked for.
class BoxedItem : public DrawnItem
{
public:
    using Drawable3dItem::setDrawer;
    using DrawnItem::DrawnItem;
    gmx::BoundingBox sceneBoundingBox() const override
    {
        ++asked;
        return box;
    }
    static inline int asked = 0;
};

// Matrices are identities: the view shows -1 to 1 each way, 32 pixels a unit in x.
class ViewCullingTest : public SelectionTest
{
protected:
    static constexpr double pixel = 2.0 / 64;

    void SetUp() override
    {
        SelectionTest::SetUp();
        culling = std::make_unique<ViewCulling>(*scene);
    }
    static gmx::BoundingBox boxAt(double x)
    {
        return {glm::dvec3(x - 0.1, -0.1, -0.1), glm::dvec3(x + 0.1, 0.1, 0.1)};
    }
    /// Of 0.2 units each way; one that stays in sight keeps the scene's bounds where they are.
    BoxedItem* addBox(double x, int drawerType = DrawerType::Mono, int elementType = TestElement::Type)
    {
        m_boxElements.push_back(std::make_unique<TestElement>(elementType));
        auto* item = new BoxedItem(m_boxElements.back().get(), ++m_lastId, drawerType);
        item->box = boxAt(x);
        item->setPixelReach(0.0f);
        scene->addElement(item);
        return item;
    }
    bool isSeen(Drawable3dItem* item) { return culling->filter(view())(item); }

    std::unique_ptr<ViewCulling> culling;

private:
    std::vector<std::unique_ptr<TestElement>> m_boxElements;
    LONGID m_lastId = 100;
};

TEST_F(ViewCullingTest, LeavesOutWhatLiesOutside)
{
    const Scene3d::ItemFilter none;
    BoxedItem* inside = addBox(0.0);
    BoxedItem* across = addBox(1.05);
    BoxedItem* outside = addBox(1.2);
    BoxedItem* farOutside = addBox(-30.0);
    const auto filter = culling->filter(view());
    EXPECT_TRUE(filter(inside));
    EXPECT_TRUE(filter(across));
    EXPECT_FALSE(filter(outside));
    EXPECT_FALSE(filter(farOutside));
    EXPECT_FALSE(filter(nullptr));
    inside->setVisible(false);
    EXPECT_FALSE(culling->filter(view())(inside));
}

TEST_F(ViewCullingTest, CountsWhatIsDrawnAroundABox)
{
    BoxedItem* item = addBox(1.1 + 10 * pixel);
    EXPECT_FALSE(isSeen(item));
    item->setPixelReach(9.0f);
    EXPECT_FALSE(isSeen(item));
    item->setPixelReach(11.0f);
    EXPECT_TRUE(isSeen(item));
    item->setPixelReach(9.0f);
    EXPECT_FALSE(isSeen(item));
}

TEST_F(ViewCullingTest, NeverLeavesOutWhatHasNoLimits)
{
    addBox(0.0);
    BoxedItem* endless = addBox(5.0);
    endless->setPixelReach(std::numeric_limits<float>::infinity());
    BoxedItem* odd = addBox(5.0);
    odd->setPixelReach(std::numeric_limits<float>::quiet_NaN());
    BoxedItem* boxless = addBox(5.0);
    boxless->box.reset();
    boxless->boundsChanged();
    BoxedItem* caption = addBox(5.0, DrawerType::Caption);
    scene->addDrawer(LabelledItem::DrawerKind, std::make_unique<LabelledItemDrawer>(scene.get()));
    auto* label = new LabelledItem(7);
    label->anchor = glm::vec3(5.0f);
    scene->addElement(label);
    TestItem local;
    for (Drawable3dItem* item : std::vector<Drawable3dItem*>{endless, odd, boxless, caption, label, &local})
        EXPECT_TRUE(isSeen(item));
}

// They keep flags in a buffer, which would be uploaded anew for each view.
TEST_F(ViewCullingTest, LeavesInstancesAlone)
{
    QDir::addSearchPath(QStringLiteral("shader"),
                        QStringLiteral(V3D_SOURCE_DIR "/tests/gl/instanced/shaders"));
    scene->addDrawer(MarkItem::DrawerKind,
                     std::make_unique<InstancedViewerOrientedTextureDrawer>(scene.get()));
    auto* inside = new MarkItem(7, glm::vec3(0.0f));
    auto* outside = new MarkItem(8, glm::vec3(5.0f));
    scene->addElement(inside);
    scene->addElement(outside);
    EXPECT_TRUE(isSeen(outside));
    drawFrame(view());
    GlCalls calls(*gl);
    RenderTarget target(*gl, Size);
    target.bind();
    scene->drawFrame(view(), nullptr, culling->filter(view()));
    EXPECT_TRUE(calls.uploads.empty());
}

TEST_F(ViewCullingTest, LeavesOutItemsOfStages)
{
    constexpr int kind = 4713, mixedKind = 4714;
    auto stages = std::make_unique<CompositeDrawer>(scene.get());
    stages->addStage(1, DrawerType::Mono);
    stages->addStage(2, DrawerType::WideLines);
    scene->addDefaultDrawer(kind, std::move(stages));
    auto mixed = std::make_unique<CompositeDrawer>(scene.get());
    mixed->addStage(1, DrawerType::Mono);
    mixed->addStage(2, std::make_unique<TestDrawer>(scene.get()));
    scene->addDefaultDrawer(mixedKind, std::move(mixed));
    addBox(0.0);
    EXPECT_FALSE(isSeen(addBox(5.0, kind)));
    EXPECT_TRUE(isSeen(addBox(5.0, mixedKind))) << "one of its drawers is not known to draw one by one";
}

TEST_F(ViewCullingTest, GivesTheFilterBackWhereItLeavesOutNothing)
{
    BoxedItem* item = addBox(5.0);
    const auto filterOf = [&](const PaintContext& context) { return culling->filter(context, {}); };
    PaintContext context = view();
    ASSERT_TRUE(filterOf(context));
    context.drawMode = DrawMode::GeometryCapture;
    EXPECT_FALSE(filterOf(context)) << "a capture is of all";
    context = view();
    context.viewportRect = QRect();
    EXPECT_FALSE(filterOf(context));
    context = view();
    QOpenGLShaderProgram program;
    context.program = &program;
    EXPECT_FALSE(filterOf(context)) << "it may put vertices anywhere";
    scene->startGroupOperation();
    EXPECT_FALSE(filterOf(view())) << "boxes of updates that are yet to come";
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    culling->setEnabled(false);
    EXPECT_FALSE(culling->isEnabled());
    EXPECT_FALSE(filterOf(view()));
    EXPECT_TRUE(culling->filter(view(), [&](Drawable3dItem* other) { return other == item; })(item));
}

TEST_F(ViewCullingTest, AsksTheCallersFilterOnlyForWhatIsSeen)
{
    BoxedItem* inside = addBox(0.0);
    BoxedItem* outside = addBox(5.0);
    std::vector<Drawable3dItem*> asked;
    const auto filter = culling->filter(view(), [&](Drawable3dItem* item) {
        asked.push_back(item);
        return item != inside;
    });
    EXPECT_FALSE(filter(inside));
    EXPECT_FALSE(filter(outside));
    EXPECT_EQ(asked, (std::vector<Drawable3dItem*>{inside}));
}

TEST_F(ViewCullingTest, FollowsItemsThatMove)
{
    addBox(0.0);
    BoxedItem* item = addBox(5.0);
    const auto move = [&](double x, const char* how, auto tell) {
        item->box = boxAt(x);
        tell();
        EXPECT_EQ(isSeen(item), std::abs(x) < 1.0) << how;
    };
    for (const double x : {0.5, 5.0, -0.5, -4.0}) {
        move(x, "by its transform", [&] { item->setTransform(glm::mat4(1.0f), false); });
        move(-0.7 * x, "by word", [&] { item->boundsChanged(); });
        move(x, "by an update", [&] {
            std::vector<Graphics3dItem*> items{item};
            scene->updateGraphicsItems(items);
        });
        move(-0.7 * x, "by an update of its data", [&] { item->updateData(nullptr); });
        move(x, "by an update of all", [&] { scene->updateGraphicsItems(); });
        move(-0.7 * x, "by dirty bounds", [&] { scene->setBoundsDirty(); });
        move(x, "in a group", [&] {
            scene->startGroupOperation();
            item->updateData(nullptr);
            scene->finishGroupOperation(ksp::StagedProgress::dummy());
        });
    }
}

// A box that cannot be asked for in time must not decide.
TEST_F(ViewCullingTest, LeavesOutNothingThatChangesAfterwards)
{
    addBox(0.0);
    BoxedItem* moved = addBox(5.0);
    BoxedItem* other = addBox(5.0);
    const auto filter = culling->filter(view());
    EXPECT_FALSE(filter(moved));
    moved->box = boxAt(0.0);
    moved->boundsChanged();
    EXPECT_TRUE(filter(moved));
    scene->removeElement(other->getId());
    BoxedItem* fresh = addBox(0.2);
    EXPECT_TRUE(filter(fresh));
    EXPECT_TRUE(isSeen(fresh));
    EXPECT_TRUE(filter(fresh));
}

TEST_F(ViewCullingTest, FollowsTheScenesTransform)
{
    addBox(0.0);
    auto element = std::make_unique<TestElement>();
    element->box = boxAt(5.0);
    auto* item = new TestGraphicsItem(element.get());
    scene->addElement(item);
    item->setPixelReach(0.0f);
    EXPECT_FALSE(isSeen(item));
    scene->setModelToSceneTransform(glm::scale(glm::dmat4(1.0), glm::dvec3(0.1)));
    EXPECT_TRUE(isSeen(item));
    scene->removeElement(item->getId());
}

TEST_F(ViewCullingTest, AsksForBoxesOfWhatChangedOnly)
{
    std::vector<BoxedItem*> items;
    for (int i = 0; i < 50; ++i)
        items.push_back(addBox(0.1 * i));
    QCoreApplication::processEvents();
    drawFrame(view());
    const auto asked = [&] {
        BoxedItem::asked = 0;
        RenderTarget target(*gl, Size);
        target.bind();
        scene->drawFrame(view(), nullptr, culling->filter(view()));
        return BoxedItem::asked;
    };
    asked();
    EXPECT_EQ(asked(), 0);
    items[7]->setTransform(glm::mat4(1.0f), false);
    items[7]->setTransform(glm::mat4(1.0f), false);
    EXPECT_EQ(asked(), 1);
    std::vector<Graphics3dItem*> updated{items[1], items[2], items[3]};
    scene->updateGraphicsItems(updated);
    EXPECT_EQ(asked(), 3) << "and the scene's bounds come of them too";
    scene->removeElement(items[9]->getId());
    EXPECT_EQ(asked(), 0);
}

TEST_F(ViewCullingTest, DrawsChildrenOfWhatItLeavesOut)
{
    addBox(0.0);
    TestItem child;
    auto element = std::make_unique<TestElement>();
    auto* item = new TestGraphicsItem(element.get());
    item->fixedBox = boxAt(5.0);
    item->setPixelReach(0.0f);
    item->children = {&child};
    scene->addElement(item);
    EXPECT_FALSE(isSeen(item));
    EXPECT_TRUE(isSeen(&child));
    scene->removeElement(item->getId());
}

TEST_F(ViewCullingTest, TellsTheBoxOfVisibleItems)
{
    EXPECT_TRUE(scene->visibleBounds().isNull());
    BoxedItem* left = addBox(-0.5);
    addBox(0.5);
    BoxedItem* caption = addBox(2.0, DrawerType::Caption);
    EXPECT_EQ(scene->visibleBounds(),
              gmx::BoundingBox(glm::dvec3(-0.6, -0.1, -0.1), glm::dvec3(2.1, 0.1, 0.1)));
    caption->setVisible(false);
    left->box = boxAt(-0.25);
    left->boundsChanged();
    EXPECT_EQ(scene->visibleBounds(),
              gmx::BoundingBox(glm::dvec3(-0.35, -0.1, -0.1), glm::dvec3(0.6, 0.1, 0.1)));
    scene->clear();
    EXPECT_TRUE(scene->visibleBounds().isNull());
}

} // namespace
