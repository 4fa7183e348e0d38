#include <framework/graphics/InteractiveGraphicsItem.h>
#include <framework/graphics/InteractiveGraphicsScene.h>
#include <framework/model/CModelElement.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProjectModel.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Element : public CModelElement
{
public:
    int getType() const override { return 0x101; }
};

// The least that an item has to bring, with points for the test.
class Item : public InteractiveGraphicsItem
{
public:
    using InteractiveGraphicsItem::InteractiveGraphicsItem;
    void updateData(ISubject*) override { ++updates; }
    void update() override {}
    bool isVisible() const override { return true; }
    unsigned int getGlueMask() const override { return 0; }
    InteractiveGraphicsScene* getIScene() const override { return nullptr; }
    gmx::BoundingBox sceneBoundingBox() const override { return {}; }
    glm::dmat4 getTransform() const override { return glm::dmat4(1.0); }
    glm::dmat4 sceneToModelTransform() const override { return glm::dmat4(1.0); }
    glm::dvec3 getNodePoint(int index) const override { return points.at(static_cast<std::size_t>(index)); }
    std::vector<glm::dvec3> getNodePoints() const override { return points; }

    std::vector<glm::dvec3> points;
    int updates = 0;
};

} // namespace

TEST(InteractiveGraphicsItem, StandsForItsElement)
{
    CProjectModel model(nullptr);
    CModelElementManager* manager = model.getCreateItemManager(0x101);
    manager->addItem(std::make_unique<Element>());
    CModelElement* element = manager->addItem(std::make_unique<Element>());
    const Item item(element);
    EXPECT_EQ(item.getModelElement(), element);
    EXPECT_EQ(item.getId(), 2);
    EXPECT_EQ(item.type(), 0x101);
    EXPECT_EQ(item.getVisibilityType(), 0x101);
}

TEST(InteractiveGraphicsItem, KeepsTheIdentifierWhenTheElementIsGone)
{
    CProjectModel model(nullptr);
    CModelElementManager* manager = model.getCreateItemManager(0x101);
    Item item(manager->addItem(std::make_unique<Element>()));
    manager->removeItem(1);
    EXPECT_EQ(item.getModelElement(), nullptr);
    EXPECT_EQ(item.getId(), 1);
    EXPECT_EQ(item.type(), 0);
    EXPECT_FALSE(item.isHighlighted());
    item.choose(true);
}

TEST(InteractiveGraphicsItem, WithoutElement)
{
    const Item item(nullptr);
    EXPECT_EQ(item.getModelElement(), nullptr);
    EXPECT_EQ(item.getId(), 0);
    EXPECT_EQ(item.type(), 0);
    EXPECT_EQ(item.getVisibilityType(), 0);
}

TEST(InteractiveGraphicsItem, ChoosingMarksTheElement)
{
    Element element;
    Item item(&element);
    element.addObserver(&item);
    EXPECT_FALSE(item.isHighlighted());
    item.choose(true);
    EXPECT_TRUE(element.isHighlighted());
    EXPECT_TRUE(item.isHighlighted());
    EXPECT_EQ(item.updates, 1);
    item.choose(false);
    EXPECT_FALSE(item.isHighlighted());
}

TEST(InteractiveGraphicsItem, LeavesItsElementWhenItDies)
{
    Element element;
    {
        Item item(&element);
        element.addObserver(&item);
    }
    EXPECT_THAT(element.getObservers(), IsEmpty());
}

TEST(InteractiveGraphicsItem, IsGuarded)
{
    auto item = std::make_unique<Item>(nullptr);
    const ksp::GuardedPtr<Item> guarded(item.get());
    EXPECT_EQ(guarded.get(), item.get());
    item.reset();
    EXPECT_FALSE(guarded);
}

TEST(InteractiveGraphicsItem, NodePointsAreOneGroup)
{
    Item item(nullptr);
    EXPECT_EQ(item.getNodePointsCount(), 0);
    item.points = {{1, 2, 3}, {4, 5, 6}};
    EXPECT_EQ(item.getNodePointsCount(), 2);
    EXPECT_THAT(item.getGroupedNodePoints(), ElementsAre(item.points));
}

TEST(InteractiveGraphicsItem, CannotBeEditedByDefault)
{
    Item item(nullptr);
    item.points = {{1, 2, 3}};
    item.edit();
    EXPECT_FALSE(item.isPointCanBeDeleted(0));
    EXPECT_FALSE(item.setNodePoints({}));
    EXPECT_FALSE(item.setNodePoint(0, {0, 0, 0}));
    EXPECT_FALSE(item.addNodePoint(0, {0, 0, 0}));
    EXPECT_THAT(item.getNodePoints(), ElementsAre(glm::dvec3(1, 2, 3)));
    EXPECT_EQ(item.getSelectionPriority(), 0);
    EXPECT_EQ(item.getHighliteType(), 0);
}
