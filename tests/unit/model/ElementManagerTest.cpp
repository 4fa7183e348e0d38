#include "ModelFixtures.h"

#include <framework/model/CProjectModel.h>

#include <chrono>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ElementManager : public testing::Test
{
protected:
    std::unique_ptr<CProjectModel> model = std::make_unique<CProjectModel>(nullptr);
    CModelElementManager* manager = model->getCreateItemManager(0x101);

    std::vector<CModelElement*> add(int count)
    {
        return manager->addItems(makeElements<PointElement>(count));
    }
};

// Tells through a flag that it was destroyed.
class MortalElement : public PointElement
{
public:
    explicit MortalElement(bool& dead)
        : m_dead(dead)
    {
    }
    ~MortalElement() override { m_dead = true; }

private:
    bool& m_dead;
};

} // namespace

TEST_F(ElementManager, KeepsElementsInOrder)
{
    const auto added = add(3);
    EXPECT_THAT(idsOf(added), ElementsAre(1, 2, 3));
    EXPECT_EQ(manager->getItems(), added);
    EXPECT_EQ(manager->getItemsCount(), 3);
    EXPECT_EQ(manager->getItem(2), added[1]);
    EXPECT_EQ(added[1]->getManager(), manager);
    EXPECT_EQ(manager->getType(), 0x101);
    EXPECT_EQ(manager->getModel(), model.get());
}

TEST_F(ElementManager, LeavesNullsOut)
{
    Extension extension;
    manager->registerExtension(&extension);
    auto elements = makeElements<PointElement>(2);
    elements.insert(elements.begin() + 1, nullptr);
    EXPECT_EQ(manager->addItems(std::move(elements)).size(), 2u);
    EXPECT_EQ(manager->addItem(nullptr), nullptr);
    EXPECT_THAT(manager->addItems({}), IsEmpty());
    EXPECT_THAT(extension.told, ElementsAre("+1,2"));
}

TEST_F(ElementManager, KeepsOrderThroughRemovals)
{
    add(10);
    manager->removeItems({2, 9, 4});
    EXPECT_THAT(idsOf(manager->getItems()), ElementsAre(1, 3, 5, 6, 7, 8, 10));
    manager->removeItems({1, 3, 5, 6});
    add(1);
    EXPECT_THAT(idsOf(manager->getItems()), ElementsAre(7, 8, 10, 11));
    manager->removeItem(8);
    manager->removeItem(7);
    manager->removeItem(10);
    EXPECT_THAT(idsOf(manager->getItems()), ElementsAre(11));
    EXPECT_EQ(manager->getItem(11)->getId(), 11);
    EXPECT_EQ(manager->getItemsCount(), 1);
}

TEST_F(ElementManager, IgnoresUnknownAndDoubledIdentifiers)
{
    add(2);
    Extension extension;
    manager->registerExtension(&extension);
    manager->removeItems({7, 2, 0, 2, -1});
    manager->removeItems({7});
    manager->removeItems({});
    EXPECT_THAT(extension.told, ElementsAre("+1,2", "-2"));
    EXPECT_EQ(manager->getItemsCount(), 1);
}

TEST_F(ElementManager, RemovesInOrderWhateverTheCallers)
{
    add(5);
    Extension extension;
    manager->registerExtension(&extension);
    manager->removeItems({5, 1, 4, 2});
    EXPECT_THAT(extension.told, ElementsAre("+1,2,3,4,5", "-1,2,4,5"));
    EXPECT_THAT(idsOf(manager->getItems()), ElementsAre(3));
}

TEST_F(ElementManager, DoesNotTouchElementsOfAnotherManager)
{
    CModelElementManager* lines = model->getCreateItemManager(0x102);
    const LONGID id = lines->addItem(std::make_unique<LineElement>())->getId();
    EXPECT_EQ(manager->getItem(id), nullptr);
    manager->removeItem(id);
    EXPECT_EQ(lines->getItemsCount(), 1);
}

TEST_F(ElementManager, TellsExtensionsOncePerBatchInOrderOfRegistration)
{
    Extension first, second;
    manager->registerExtension(&first);
    manager->registerExtension(&second);
    std::vector<std::size_t> toldBefore;
    second.onAdded = [&](const auto&) { toldBefore.push_back(first.told.size()); };
    add(3);
    manager->removeItems({1, 3});
    EXPECT_THAT(first.told, ElementsAre("+1,2,3", "-1,3"));
    EXPECT_THAT(second.told, ElementsAre("+1,2,3", "-1,3"));
    EXPECT_THAT(toldBefore, ElementsAre(1));
}

TEST_F(ElementManager, RegisteringExtensionIsToldOfWhatIsThere)
{
    Extension extension;
    manager->registerExtension(&extension);
    EXPECT_THAT(extension.told, IsEmpty());
    add(2);
    Extension late;
    manager->registerExtension(&late);
    EXPECT_THAT(late.told, ElementsAre("+1,2"));
    EXPECT_THAT(extension.told, ElementsAre("+1,2"));
    manager->registerExtension(&late);
    manager->registerExtension(nullptr);
    EXPECT_THAT(late.told, ElementsAre("+1,2"));
    EXPECT_THAT(manager->getExtensions(), ElementsAre(&extension, &late));
}

TEST_F(ElementManager, FindsExtensionsByType)
{
    Extension a, b, c;
    a.type = 5;
    b.type = c.type = 6;
    for (Extension* extension : {&a, &b, &c})
        manager->registerExtension(extension);
    EXPECT_EQ(manager->getExtension(6), &b);
    EXPECT_EQ(manager->getExtension(7), nullptr);
}

TEST_F(ElementManager, ForgetsExtensionsThatAreGone)
{
    auto goes = std::make_unique<Extension>();
    Extension stays;
    manager->registerExtension(goes.get());
    manager->registerExtension(&stays);
    goes.reset();
    add(1);
    EXPECT_THAT(stays.told, ElementsAre("+1"));
    EXPECT_EQ(manager->getExtension(1), &stays);
    EXPECT_THAT(manager->getExtensions(), ElementsAre(&stays));
}

TEST_F(ElementManager, ExtensionMayDieWhileOthersAreTold)
{
    Extension first;
    auto second = std::make_unique<Extension>();
    manager->registerExtension(&first);
    manager->registerExtension(second.get());
    first.onAdded = [&](const auto&) { second.reset(); };
    add(1);
    EXPECT_THAT(manager->getExtensions(), ElementsAre(&first));
}

TEST_F(ElementManager, RemovedElementsLiveUntilAllAreTold)
{
    bool dead = false;
    const LONGID id = manager->addItem(std::make_unique<MortalElement>(dead))->getId();
    Extension extension;
    manager->registerExtension(&extension);
    int asked = 0;
    const auto check = [&](const std::vector<CModelElement*>& elements) {
        ++asked;
        EXPECT_FALSE(dead);
        EXPECT_EQ(elements.front()->getId(), id);
        EXPECT_EQ(elements.front()->getManager(), nullptr);
        EXPECT_EQ(manager->getItem(id), nullptr);
        EXPECT_EQ(model->getElement(id), nullptr);
        EXPECT_EQ(manager->getItemsCount(), 0);
    };
    extension.onRemoved = check;
    QObject::connect(model.get(), &CProjectModel::elementsRemoved, check);
    manager->removeItem(id);
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(dead);
}

TEST_F(ElementManager, ModelTellsAfterTheExtensions)
{
    Extension extension;
    manager->registerExtension(&extension);
    std::vector<LONGID> heard;
    QObject::connect(model.get(), &CProjectModel::elementsAdded,
                     [&](const std::vector<CModelElement*>& elements) {
                         EXPECT_EQ(extension.told.size(), 1u);
                         heard = idsOf(elements);
                     });
    add(2);
    EXPECT_THAT(heard, ElementsAre(1, 2));
}

TEST_F(ElementManager, ExtensionMayRemoveWhatWasJustAdded)
{
    Extension first, second;
    manager->registerExtension(&first);
    manager->registerExtension(&second);
    first.onAdded = [&](const auto&) {
        manager->removeItem(2);
        EXPECT_EQ(manager->getItem(2), nullptr);
    };
    const auto added = add(3);
    EXPECT_THAT(idsOf(added), ElementsAre(1, 3));
    EXPECT_THAT(first.told, ElementsAre("+1,2,3", "-2"));
    EXPECT_THAT(second.told, ElementsAre("+1,2,3", "-2"));
}

TEST_F(ElementManager, AddItemGivesNullWhenItIsRemovedAtOnce)
{
    Extension extension;
    manager->registerExtension(&extension);
    extension.onAdded = [&](const auto&) { manager->removeAll(); };
    EXPECT_EQ(manager->addItem(std::make_unique<PointElement>()), nullptr);
}

TEST_F(ElementManager, ExtensionMayAddWhileItIsTold)
{
    Extension first, second;
    manager->registerExtension(&first);
    manager->registerExtension(&second);
    first.onAdded = [&](const auto&) {
        if (manager->getItemsCount() < 3) {
            EXPECT_NE(manager->addItem(std::make_unique<PointElement>()), nullptr);
        }
    };
    add(1);
    EXPECT_THAT(first.told, ElementsAre("+1", "+2", "+3"));
    EXPECT_THAT(second.told, ElementsAre("+1", "+2", "+3"));
}

TEST_F(ElementManager, ExtensionMayAddAndRemoveWhileElementsGo)
{
    Extension extension;
    manager->registerExtension(&extension);
    add(3);
    extension.onRemoved = [&](const std::vector<CModelElement*>& elements) {
        if (elements.front()->getId() == 1) {
            manager->addItem(std::make_unique<PointElement>());
            manager->removeItems({1, 2});
        }
    };
    manager->removeItem(1);
    EXPECT_THAT(extension.told, ElementsAre("+1,2,3", "-1", "+4", "-2"));
    EXPECT_THAT(idsOf(manager->getItems()), ElementsAre(3, 4));
}

TEST_F(ElementManager, ExtensionThatComesDuringANotificationIsToldOnceOfEach)
{
    Extension first, late;
    manager->registerExtension(&first);
    first.onAdded = [&](const auto&) {
        if (manager->getItemsCount() == 1) {
            manager->addItem(std::make_unique<PointElement>());
            manager->registerExtension(&late);
        }
    };
    add(1);
    EXPECT_THAT(first.told, ElementsAre("+1", "+2"));
    EXPECT_THAT(late.told, ElementsAre("+1,2"));
    manager->removeItem(2);
    EXPECT_THAT(late.told, ElementsAre("+1,2", "-2"));
}

TEST_F(ElementManager, RegisteringExtensionMayRemoveWhatItIsToldOf)
{
    add(2);
    Extension extension;
    extension.onAdded = [&](const std::vector<CModelElement*>& elements) {
        manager->removeAll();
        EXPECT_EQ(elements.back()->getId(), 2); // still alive
    };
    manager->registerExtension(&extension);
    EXPECT_THAT(extension.told, ElementsAre("+1,2", "-1,2"));
}

TEST_F(ElementManager, DestroyedModelTellsItsExtensions)
{
    Extension extension;
    manager->registerExtension(&extension);
    PointElement outside;
    Observer observer;
    for (CModelElement* element : add(2))
        element->addObserver(&observer);
    manager->getItem(1)->addObserver(manager->getItem(2));
    manager->getItem(2)->addObserver(manager->getItem(1));
    outside.addObserver(manager->getItem(2));
    model.reset();
    EXPECT_THAT(extension.told, ElementsAre("+1,2", "-1,2"));
    EXPECT_THAT(observer.getSubjects(), IsEmpty());
    EXPECT_THAT(outside.getObservers(), IsEmpty());
}

TEST_F(ElementManager, ModelMayBeDestroyedByWhoIsTold)
{
    Extension first, second;
    manager->registerExtension(&first);
    manager->registerExtension(&second);
    first.onAdded = [&](const auto&) { model.reset(); };
    EXPECT_THAT(add(2), IsEmpty());
    EXPECT_THAT(first.told, ElementsAre("+1,2"));
    EXPECT_EQ(model, nullptr);
}

TEST_F(ElementManager, ReportsProgressThroughItsExtensions)
{
    Extension first, second;
    manager->registerExtension(&first);
    manager->registerExtension(&second);
    std::vector<double> seen;
    ksp::StagedProgress progress([&](double percentage, const QString&) { seen.push_back(percentage); });
    manager->addItems(makeElements<PointElement>(1), progress);
    EXPECT_THAT(seen, testing::IsSupersetOf({25.0, 50.0, 75.0, 100.0}));
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

TEST_F(ElementManager, HundredThousandElementsComeAndGoInLinearTime)
{
    constexpr int count = 100000;
    Extension extension;
    manager->registerExtension(&extension);
    const auto start = std::chrono::steady_clock::now();

    auto ids = idsOf(add(count));
    std::reverse(ids.begin(), ids.end());
    manager->removeItems(ids);
    EXPECT_EQ(manager->getItemsCount(), 0);

    for (LONGID id : idsOf(add(count))) // one by one, from the front
        manager->removeItem(id);
    EXPECT_EQ(manager->getItemsCount(), 0);
    EXPECT_EQ(extension.told.size(), 3u + count);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}
