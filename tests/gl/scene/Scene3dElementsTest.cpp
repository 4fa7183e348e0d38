#include "tests/support/LogTrap.h"
#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <framework/model/CFilterElement.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtTest/QSignalSpy>

namespace {

class Creator : public Graphics3dItemCreator
{
public:
    Graphics3dItem* create(CModelElement* element) override
    {
        auto* own = dynamic_cast<TestElement*>(element);
        return own && own->getName() != QLatin1String("not shown") ? new TestGraphicsItem(own) : nullptr;
    }
};

class Scene3dElementsTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        model = project->getModel();
        for (int type : {TestElement::Type, TestElement::Type + 1})
            CGraphics3dExtension::registerElementType(type, scene.get(), std::make_unique<Creator>());
        TestGraphicsItem::order.clear();
    }

    TestElement* add(int type = TestElement::Type)
    {
        auto element = std::make_unique<TestElement>(type);
        return static_cast<TestElement*>(model->getCreateItemManager(type)->addItem(std::move(element)));
    }
    TestGraphicsItem* item(const CModelElement* element)
    {
        return dynamic_cast<TestGraphicsItem*>(scene->findGraphicsItem(element->getId()));
    }

    CProjectModel* model = nullptr;
};

TEST_F(Scene3dElementsTest, ElementsAppearAndLeave)
{
    TestElement* element = add();
    ASSERT_NE(item(element), nullptr);
    EXPECT_EQ(scene->getItems().size(), 1u);
    EXPECT_EQ(item(element)->getModelElement(), element);
    QSignalSpy removed(scene.get(), &Scene3d::elementRemoved);
    const LONGID id = element->getId();
    model->getItemManager(TestElement::Type)->removeItem(id);
    EXPECT_EQ(scene->findGraphicsItem(id), nullptr);
    EXPECT_EQ(TestGraphicsItem::alive, 0);
    EXPECT_EQ(removed.count(), 1);
}

TEST_F(Scene3dElementsTest, AnElementWithoutItemIsNotObserved)
{
    auto element = std::make_unique<TestElement>();
    element->setName(QStringLiteral("not shown"));
    CModelElement* raw = model->getItemManager(TestElement::Type)->addItem(std::move(element));
    EXPECT_TRUE(scene->getItems().empty());
    EXPECT_TRUE(raw->getObservers().empty());
}

TEST_F(Scene3dElementsTest, ManyElementsCostOneUpdateEachAndOneChange)
{
    QSignalSpy views(scene.get(), &Scene3d::updateView);
    std::vector<std::unique_ptr<CModelElement>> elements;
    for (int i = 0; i < 100; ++i)
        elements.push_back(std::make_unique<TestElement>());
    model->getItemManager(TestElement::Type)->addItems(std::move(elements));
    EXPECT_EQ(TestGraphicsItem::order.size(), 100u);
    EXPECT_EQ(views.count(), 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(views.count(), 1);
    EXPECT_EQ(TestGraphicsItem::order.size(), 100u);
}

TEST_F(Scene3dElementsTest, OneDrawerAVisibilityAndDrawerType)
{
    TestGraphicsItem* a = item(add());
    TestGraphicsItem* b = item(add());
    TestGraphicsItem* c = item(add(TestElement::Type + 1));
    EXPECT_EQ(a->getDrawer(), b->getDrawer());
    EXPECT_NE(a->getDrawer(), c->getDrawer());
    EXPECT_EQ(a->getDrawer(), scene->getDrawer(TestElement::Type, DrawerType::Mono));
    EXPECT_EQ(c->getDrawer(), scene->getDrawer(TestElement::Type + 1, DrawerType::Mono));
}

TEST_F(Scene3dElementsTest, AnItemThatWantsAnotherDrawerMovesThereWhenUpdated)
{
    TestElement* element = add();
    TestGraphicsItem* moving = item(element);
    moving->drawerType = DrawerType::Mesh;
    element->notifyObservers();
    EXPECT_EQ(moving->getDrawer(), scene->getDrawer(TestElement::Type, DrawerType::Mesh));
    EXPECT_TRUE(scene->getDrawer(TestElement::Type, DrawerType::Mono)->getItems().empty());
}

TEST_F(Scene3dElementsTest, AddingAnIdentifierTwiceKeepsTheFirstItemAndLeaksNothing)
{
    TestElement* element = add();
    TestGraphicsItem* first = item(element);
    scene->addElement(new TestGraphicsItem(element));
    EXPECT_EQ(item(element), first);
    EXPECT_EQ(TestGraphicsItem::alive, 1);
    scene->addElement(first);
    EXPECT_EQ(item(element), first);
    EXPECT_EQ(TestGraphicsItem::alive, 1);
}

TEST_F(Scene3dElementsTest, OutsideOfGroupsAnElementIsUpdatedAtOnce)
{
    TestElement loose;
    auto* own = new TestGraphicsItem(&loose);
    scene->addElement(own);
    EXPECT_GE(own->updates, 1);
    EXPECT_TRUE(scene->getBounds().contains(glm::dvec3(1.0)));
    scene->removeElement(own->getId());
}

TEST_F(Scene3dElementsTest, RemovingAnUnknownElementOnlyMarksTheBounds)
{
    TestElement* element = add();
    QCoreApplication::processEvents();
    scene->flushBounds();
    element->box = gmx::BoundingBox(glm::dvec3(0.0), glm::dvec3(7.0));
    scene->flushBounds();
    EXPECT_EQ(scene->getMax(), glm::dvec3(1.0)) << "clean bounds stay";
    QSignalSpy removed(scene.get(), &Scene3d::elementRemoved);
    scene->removeElement(987654);
    EXPECT_EQ(removed.count(), 0);
    scene->flushBounds();
    EXPECT_EQ(scene->getMax(), glm::dvec3(7.0)) << "dirty bounds are computed again";
}

TEST_F(Scene3dElementsTest, NestedGroupsUpdateWhenTheOutermostEnds)
{
    TestElement* element = add();
    TestGraphicsItem* own = item(element);
    QCoreApplication::processEvents();
    const int before = own->updates;
    scene->startGroupOperation();
    scene->startGroupOperation();
    EXPECT_TRUE(scene->isInGroupOperation());
    element->notifyObservers();
    element->notifyObservers();
    EXPECT_EQ(own->updates, before);
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_EQ(own->updates, before);
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_EQ(own->updates, before + 1);
    EXPECT_FALSE(scene->isInGroupOperation());
}

TEST_F(Scene3dElementsTest, FinishingWithoutAStartDoesNothing)
{
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_FALSE(scene->isInGroupOperation());
    TestElement* element = add();
    const int before = item(element)->updates;
    element->notifyObservers();
    EXPECT_EQ(item(element)->updates, before + 1);
}

TEST_F(Scene3dElementsTest, PendingItemsThatLeaveAreForgotten)
{
    TestElement* removed = add();
    TestElement* cleared = add();
    scene->startGroupOperation();
    removed->notifyObservers();
    cleared->notifyObservers();
    model->getItemManager(TestElement::Type)->removeItem(removed->getId());
    scene->clear();
    TestGraphicsItem::order.clear();
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_TRUE(TestGraphicsItem::order.empty());
    EXPECT_EQ(TestGraphicsItem::alive, 0);
}

TEST_F(Scene3dElementsTest, OthersOfAGroupAreUpdatedWhenSomeHaveLeft)
{
    const std::vector<TestElement*> elements = {add(), add(), add()};
    scene->startGroupOperation();
    for (TestElement* element : elements)
        element->notifyObservers();
    model->getItemManager(TestElement::Type)->removeItem(elements[1]->getId());
    TestElement* late = add(); // perhaps at the address of the one that left
    TestGraphicsItem::order.clear();
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    const std::vector<TestGraphicsItem*> expected = {item(elements[0]), item(elements[2]), item(late)};
    EXPECT_EQ(TestGraphicsItem::order, expected);
    scene->startGroupOperation(); // and wait anew
    elements[2]->notifyObservers();
    TestGraphicsItem::order.clear();
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_EQ(TestGraphicsItem::order, std::vector<TestGraphicsItem*>{item(elements[2])});
}

TEST_F(Scene3dElementsTest, AnItemNamedTwiceIsUpdatedOnce)
{
    TestGraphicsItem* one = item(add());
    TestGraphicsItem* other = item(add());
    std::vector<Graphics3dItem*> items = {other, one, other};
    TestGraphicsItem::order.clear();
    scene->updateGraphicsItems(items);
    EXPECT_EQ(TestGraphicsItem::order, (std::vector<TestGraphicsItem*>{other, one}));
    items = {other, nullptr, one, other};
    scene->startGroupOperation();
    scene->updateGraphicsItems(items);
    TestGraphicsItem::order.clear();
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_EQ(TestGraphicsItem::order, (std::vector<TestGraphicsItem*>{one, other}));
}

TEST_F(Scene3dElementsTest, ItemsAreUpdatedAfterThoseTheyDependOn)
{
    TestElement* a = add();
    TestElement* b = add();
    TestElement* c = add();
    a->addObserver(b); // b depends on a, c on b
    b->addObserver(c);
    std::vector<Graphics3dItem*> items = {item(c), item(a), item(b)};
    scene->sortItemsByUpdateOrder(items);
    EXPECT_EQ(items, (std::vector<Graphics3dItem*>{item(a), item(b), item(c)}));
    items = {item(c), item(a)}; // b is not among them: nothing joins c to a
    scene->sortItemsByUpdateOrder(items);
    EXPECT_EQ(items, (std::vector<Graphics3dItem*>{item(c), item(a)}));
    c->addObserver(a); // a cycle
    // From b: its subject a, whose subject c, whose subject b is being visited: c, a, b.
    items = {item(b), item(c), item(a)};
    scene->sortItemsByUpdateOrder(items);
    EXPECT_EQ(items, (std::vector<Graphics3dItem*>{item(c), item(a), item(b)}));
}

TEST_F(Scene3dElementsTest, AGroupUpdatesInOrderOfDependence)
{
    std::vector<TestElement*> chain;
    for (int i = 0; i < 20; ++i)
        chain.push_back(add());
    // Every element depends on the one added after it.
    for (std::size_t i = 0; i + 1 < chain.size(); ++i)
        chain[i + 1]->addObserver(chain[i]);
    scene->startGroupOperation();
    std::vector<Graphics3dItem*> items;
    for (TestElement* element : chain)
        items.push_back(item(element));
    scene->updateGraphicsItems(items);
    TestGraphicsItem::order.clear();
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    std::vector<TestGraphicsItem*> expected;
    for (auto element = chain.rbegin(); element != chain.rend(); ++element)
        expected.push_back(item(*element));
    EXPECT_EQ(TestGraphicsItem::order, expected);
}

// Drawers draw in the order in which items came to them: were it that of addresses, pictures would differ
// from run to run where things shine through.
TEST_F(Scene3dElementsTest, AGroupUpdatesInOrderOfIdentifiers)
{
    std::vector<TestGraphicsItem*> expected;
    for (int i = 0; i < 50; ++i)
        expected.push_back(item(add()));
    std::vector<Graphics3dItem*> backwards(expected.rbegin(), expected.rend());
    scene->startGroupOperation();
    scene->updateGraphicsItems(backwards);
    TestGraphicsItem::order.clear();
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_EQ(TestGraphicsItem::order, expected);
}

TEST_F(Scene3dElementsTest, SortingIsLinearInTheNumberOfSubjects)
{
    TestElement* dependent = add();
    std::vector<std::unique_ptr<CModelElement>> elements;
    for (int i = 0; i < 20000; ++i)
        elements.push_back(std::make_unique<TestElement>());
    for (CModelElement* subject : model->getItemManager(TestElement::Type)->addItems(std::move(elements)))
        subject->addObserver(dependent);
    std::vector<Graphics3dItem*> items = {item(dependent)};
    for (const auto& entry : scene->getItems())
        if (entry.second != items.front()) items.push_back(entry.second);
    QElapsedTimer timer;
    timer.start();
    scene->sortItemsByUpdateOrder(items);
    EXPECT_LT(timer.elapsed(), 1000) << "milliseconds; a quadratic walk takes several seconds";
    EXPECT_EQ(items.back(), item(dependent));
    EXPECT_EQ(items.size(), 20001u);
}

TEST_F(Scene3dElementsTest, AnUpdateMayRemoveItemsThatAreYetToBeUpdated)
{
    class Remover : public TestGraphicsItem
    {
    public:
        using TestGraphicsItem::TestGraphicsItem;
        std::function<void()> onUpdate;
        void updateDataImpl() override
        {
            TestGraphicsItem::updateDataImpl();
            if (onUpdate) onUpdate();
        }
    };
    TestElement loose(1234);
    auto* remover = new Remover(&loose);
    scene->addElement(remover);
    std::vector<Graphics3dItem*> items = {remover, nullptr};
    for (int i = 0; i < 5; ++i)
        items.push_back(item(add()));
    remover->onUpdate = [this] { model->getItemManager(TestElement::Type)->removeAll(); };
    TestGraphicsItem::order.clear();
    scene->updateGraphicsItems(items);
    EXPECT_EQ(TestGraphicsItem::order, (std::vector<TestGraphicsItem*>{remover}));
    EXPECT_EQ(TestGraphicsItem::alive, 1);
    remover->onUpdate = {};
}

TEST_F(Scene3dElementsTest, ACreatorThatThrowsLeavesNoGroupOpen)
{
    class Throwing : public Graphics3dItemCreator
    {
    public:
        Graphics3dItem* create(CModelElement*) override { throw std::runtime_error("no item"); }
    };
    CGraphics3dExtension extension(scene.get(), nullptr);
    extension.setCreator(std::make_unique<Throwing>());
    TestElement element;
    ElementAddingContext adding;
    EXPECT_THROW(extension.afterAddItems({&element}, adding), std::runtime_error);
    EXPECT_FALSE(scene->isInGroupOperation());
}

TEST_F(Scene3dElementsTest, ElementsThatAreThereAppearWhenTheirTypeIsRegistered)
{
    model->getCreateItemManager(99)->addItem(std::make_unique<TestElement>(99));
    EXPECT_TRUE(scene->getItems().empty());
    CGraphics3dExtension::registerElementType<TestElement, TestGraphicsItem>(99, scene.get());
    EXPECT_EQ(scene->getItems().size(), 1u);
}

TEST_F(Scene3dElementsTest, AFilterThatIsGoneFiltersNothing)
{
    TestElement* element = add();
    auto filter = std::make_unique<CFilterElement>();
    filter->setElementAccepted(element->getId(), false);
    scene->setVisibilityFilter(filter.get());
    filter.reset();
    EXPECT_EQ(scene->getVisibilityFilter(), nullptr);
    element->notifyObservers();
    EXPECT_TRUE(item(element)->isVisible());
}

TEST_F(Scene3dElementsTest, DrawingInsideAGroupCorrectsNothingTwice)
{
    QSignalSpy changed(scene.get(), &Scene3d::modelToSceneTransformChanged);
    scene->startGroupOperation();
    TestElement* element = add();
    element->box = gmx::BoundingBox(glm::dvec3(5e6), glm::dvec3(5e6 + 100));
    for (int frame = 0; frame < 4; ++frame)
        drawFrame(paintContext(4, 4));
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(scene->modelToSceneTransform(), glm::dmat4(1.0));
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    drawFrame(paintContext(4, 4));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_NEAR(scene->getMax().x, 500.0, 1e-6);
}

TEST_F(Scene3dElementsTest, AfterAFlushAFrameChangesNoTransform)
{
    TestElement* element = add();
    element->box = gmx::BoundingBox(glm::dvec3(5e6), glm::dvec3(5e6 + 100));
    scene->setBoundsDirty();
    scene->flushBounds();
    QSignalSpy changed(scene.get(), &Scene3d::modelToSceneTransformChanged);
    const glm::dmat4 before = scene->modelToSceneTransform();
    const int updates = item(element)->updates;
    drawFrame(paintContext(4, 4));
    QCoreApplication::processEvents();
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(scene->modelToSceneTransform(), before);
    EXPECT_EQ(item(element)->updates, updates);
}

TEST_F(Scene3dElementsTest, AChangeReachesTheItemsOfAllDependentElements)
{
    TestElement* a = add();
    TestElement* b = add();
    TestElement* c = add();
    a->addObserver(b);
    b->addObserver(c);
    TestGraphicsItem::order.clear();
    item(a)->updateData(a);
    EXPECT_EQ(TestGraphicsItem::order, (std::vector<TestGraphicsItem*>{item(a), item(b), item(c)}));
}

TEST_F(Scene3dElementsTest, VisibilityFollowsTheElementAndTheSceneFilter)
{
    TestElement* element = add();
    TestItem child;
    item(element)->children = {&child};
    element->setVisible(false);
    EXPECT_FALSE(item(element)->isVisible());
    EXPECT_FALSE(child.isVisible());
    element->setVisible(true);
    EXPECT_TRUE(item(element)->isVisible());
    EXPECT_TRUE(child.isVisible());
    CFilterElement filter;
    filter.setElementAccepted(element->getId(), false);
    scene->setVisibilityFilter(&filter);
    EXPECT_EQ(scene->getVisibilityFilter(), &filter);
    element->notifyObservers();
    EXPECT_FALSE(item(element)->isVisible());
    scene->setVisibilityFilter(nullptr);
    element->notifyObservers();
    EXPECT_TRUE(item(element)->isVisible());
    item(element)->children.clear();
}

TEST_F(Scene3dElementsTest, ChildrenGetDrawersOfTheItemsVisibilityType)
{
    TestElement* element = add();
    TestItem child;
    item(element)->children = {&child};
    element->notifyObservers();
    EXPECT_EQ(child.getDrawer(), scene->getDrawer(TestElement::Type, DrawerType::Mono));
    item(element)->children.clear();
}

TEST_F(Scene3dElementsTest, HighlightIsTheElements)
{
    TestElement* element = add();
    EXPECT_FALSE(item(element)->isHighlighted());
    element->setHighlighted(true);
    EXPECT_TRUE(item(element)->isHighlighted());
}

TEST_F(Scene3dElementsTest, GlueMasksByNumberOfNodePoints)
{
    TestGraphicsItem* own = item(add());
    const std::vector<std::pair<std::size_t, unsigned>> expected = {
        {0, 0xFFFFFFDFu}, {1, 0x300u}, {2, 0x1C0u}, {3, 0x1DEu}, {50, 0x1DEu}};
    for (const auto& [count, mask] : expected) {
        own->vertices.assign(count, glm::vec3(0.0f));
        EXPECT_EQ(own->getGlueMask(), mask) << count;
    }
}

TEST_F(Scene3dElementsTest, NodePointsAreTheVerticesInDoubles)
{
    TestGraphicsItem* own = item(add());
    own->vertices = {glm::vec3(1, 2, 3), glm::vec3(4, 5, 6)};
    EXPECT_EQ(own->getNodePoint(1), glm::dvec3(4, 5, 6));
    EXPECT_EQ(own->getNodePoints(), (std::vector<glm::dvec3>{glm::dvec3(1, 2, 3), glm::dvec3(4, 5, 6)}));
    for (int index : {-1, 2}) {
        const glm::vec3 vertex = own->getVertex(index);
        EXPECT_TRUE(std::isnan(vertex.x) && std::isnan(vertex.y) && std::isnan(vertex.z));
        EXPECT_TRUE(std::isnan(own->getNodePoint(index).x));
    }
}

TEST_F(Scene3dElementsTest, ItemsKnowTheirScene)
{
    TestElement* element = add();
    InteractiveGraphicsItem* own = item(element);
    EXPECT_EQ(own->getIScene(), scene.get());
    scene->setModelToSceneTransform(glm::dmat4(2.0)); // element 3,3 is 2 as well: a general matrix
    EXPECT_EQ(own->sceneToModelTransform(), glm::dmat4(0.5));
    QSignalSpy views(scene.get(), &Scene3d::updateView);
    own->update();
    EXPECT_EQ(views.count(), 1);
    TestElement loose;
    TestGraphicsItem unbound(&loose);
    EXPECT_EQ(unbound.getIScene(), nullptr);
    unbound.updateData(nullptr); // without a scene: nothing
    EXPECT_EQ(unbound.updates, 0);
}

TEST_F(Scene3dElementsTest, ExtensionsTellWhatIsDrawable)
{
    EXPECT_TRUE(CGraphics3dExtension::isItemTypeDrawable(TestElement::Type, model));
    EXPECT_FALSE(CGraphics3dExtension::isItemTypeDrawable(4711, model));
    model->getCreateItemManager(4711);
    EXPECT_FALSE(CGraphics3dExtension::isItemTypeDrawable(4711, model));
    auto* extension = static_cast<CGraphics3dExtension*>(
        model->getItemManager(TestElement::Type)->getExtension(0x36FF0500));
    ASSERT_NE(extension, nullptr);
    EXPECT_EQ(extension->getModel(), model);
    EXPECT_EQ(extension->getScene(), scene.get());
    EXPECT_NE(extension->getCreator(), nullptr);
}

TEST_F(Scene3dElementsTest, AnExtensionOutlivesItsScene)
{
    QObject owner;
    auto* extension = new CGraphics3dExtension(scene.get(), &owner);
    extension->setCreator(std::make_unique<Creator>());
    scene.reset();
    EXPECT_EQ(extension->getScene(), nullptr);
    EXPECT_EQ(extension->getModel(), nullptr);
    ElementAddingContext adding;
    extension->afterAddItems({}, adding);
    add(); // the scene's own extensions died with it
    EXPECT_EQ(TestGraphicsItem::alive, 0);
}

} // namespace
