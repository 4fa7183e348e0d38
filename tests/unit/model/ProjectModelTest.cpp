#include "ModelFixtures.h"

#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/ElementTable.h>
#include <tests/support/LogTrap.h>

#include <map>
#include <random>
#include <stdexcept>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Initializer : public ModelInitializer
{
public:
    Initializer(CProjectModel* model, std::function<void()> work)
        : ModelInitializer(model)
        , m_work(std::move(work))
    {
    }
    void initialize() override { m_work(); }

private:
    std::function<void()> m_work;
};

CModelElement* addPoint(CProjectModel& model)
{
    return model.getCreateItemManager(0x101)->addItem(std::make_unique<PointElement>());
}

} // namespace

TEST(ProjectModel, MakesOneManagerPerType)
{
    CProjectModel model(nullptr);
    EXPECT_EQ(model.getItemManager(0x102), nullptr);
    CModelElementManager* lines = model.getCreateItemManager(0x102);
    CModelElementManager* points = model.getCreateItemManager(0x101);
    EXPECT_EQ(model.getCreateItemManager(0x102), lines);
    EXPECT_EQ(model.getItemManager(0x102), lines);
    EXPECT_THAT(model.getItemManagers(), ElementsAre(points, lines));
}

TEST(ProjectModel, IdentifiersBeginAtOneAndAreNeverGivenTwice)
{
    CProjectModel model(nullptr);
    EXPECT_EQ(addPoint(model)->getId(), 1);
    EXPECT_EQ(model.getCreateItemManager(0x102)->addItem(std::make_unique<LineElement>())->getId(), 2);
    model.getItemManager(0x102)->removeItem(2);
    EXPECT_EQ(addPoint(model)->getId(), 3);
    model.clear();
    EXPECT_EQ(addPoint(model)->getId(), 4);
}

TEST(ProjectModel, FindsElementsOfAllManagers)
{
    CProjectModel model(nullptr);
    CModelElement* point = addPoint(model);
    CModelElement* line = model.getCreateItemManager(0x102)->addItem(std::make_unique<LineElement>());
    EXPECT_EQ(model.getElement(1), point);
    EXPECT_EQ(model.getElement(2), line);
    EXPECT_EQ(model.getElement(0), nullptr);
    EXPECT_EQ(model.getElement(3), nullptr);
    EXPECT_EQ(model.getElementsCount(), 2);
    model.clear();
    EXPECT_EQ(model.getElement(1), nullptr);
    EXPECT_EQ(model.getElementsCount(), 0);
    EXPECT_EQ(model.getItemManagers().size(), 2u);
}

TEST(ProjectModel, DependenciesComeBreadthFirstAndOnce)
{
    // a <- b, c; b <- d; c <- d, e; d <- f
    CProjectModel model(nullptr);
    PointElement a, b, c, d, e, f;
    a.addObserver(&b);
    a.addObserver(&c);
    b.addObserver(&d);
    c.addObserver(&d);
    c.addObserver(&e);
    d.addObserver(&f);
    EXPECT_THAT(model.getAllChildDependencies(&a), ElementsAre(&b, &c, &d, &e, &f));
    EXPECT_THAT(model.getAllChildDependencies(&c), ElementsAre(&d, &e, &f));
    EXPECT_THAT(model.getAllChildDependencies(&f), IsEmpty());
}

TEST(ProjectModel, DependenciesInACircleEndAndLeaveTheElementOut)
{
    CProjectModel model(nullptr);
    PointElement a, b, c;
    a.addObserver(&b);
    b.addObserver(&c);
    c.addObserver(&a);
    a.addObserver(&a);
    EXPECT_THAT(model.getAllChildDependencies(&a), ElementsAre(&b, &c));
    EXPECT_THAT(model.getAllChildDependencies(&b), ElementsAre(&c, &a));
}

TEST(ProjectModel, ObserversThatAreNoElementsAreNoDependencies)
{
    CProjectModel model(nullptr);
    PointElement a, b;
    Observer observer;
    a.addObserver(&observer);
    a.addObserver(&b);
    EXPECT_THAT(model.getAllChildDependencies(&a), ElementsAre(&b));
    EXPECT_THAT(model.getAllChildDependencies(nullptr), IsEmpty());
}

TEST(ProjectModel, InitializersRunOnceInOrder)
{
    CProjectModel model(nullptr);
    std::string ran;
    model.addInitializer(7, std::make_unique<Initializer>(&model, [&] { ran += 'a'; }));
    model.addInitializer(3, std::make_unique<Initializer>(&model, [&] { ran += 'b'; }));
    EXPECT_EQ(ran, "");
    model.initialize();
    model.initialize();
    EXPECT_EQ(ran, "ab");
}

TEST(ProjectModel, SecondInitializerOfAnIdentifierIsDropped)
{
    CProjectModel model(nullptr);
    std::string ran;
    auto first = std::make_unique<Initializer>(&model, [&] { ran += 'a'; });
    ModelInitializer* kept = first.get();
    model.addInitializer(7, std::move(first));
    model.addInitializer(7, std::make_unique<Initializer>(&model, [&] { ran += 'b'; }));
    model.addInitializer(8, nullptr);
    EXPECT_EQ(model.getInitializer(7), kept);
    EXPECT_EQ(model.getInitializer(8), nullptr);
    EXPECT_EQ(kept->getModel(), &model);
    model.initialize();
    EXPECT_EQ(ran, "a");
}

TEST(ProjectModel, LateInitializerRunsAtOnce)
{
    CProjectModel model(nullptr);
    model.initialize();
    std::string ran;
    model.addInitializer(1, std::make_unique<Initializer>(&model, [&] { ran += 'a'; }));
    EXPECT_EQ(ran, "a");
    model.initialize();
    EXPECT_EQ(ran, "a");
}

TEST(ProjectModel, InitializerMayAddAnotherOne)
{
    CProjectModel model(nullptr);
    std::string ran;
    model.addInitializer(1, std::make_unique<Initializer>(&model, [&] {
                             ran += 'a';
                             model.addInitializer(2,
                                                  std::make_unique<Initializer>(&model, [&] { ran += 'b'; }));
                         }));
    model.initialize();
    EXPECT_EQ(ran, "ab");
}

TEST(ProjectModel, InitializersThatThrowAreLoggedAndStopNoOther)
{
    CProjectModel model(nullptr);
    std::string ran;
    model.addInitializer(0x11,
                         std::make_unique<Initializer>(&model, [] { throw std::runtime_error("no room"); }));
    model.addInitializer(0x12, std::make_unique<Initializer>(&model, [&] { ran += 'b'; }));
    model.addInitializer(0x13, std::make_unique<Initializer>(&model, [] { throw 5; }));
    model.addInitializer(0x14, std::make_unique<Initializer>(&model, [&] { ran += 'd'; }));
    EXPECT_NO_THROW(model.initialize());
    EXPECT_EQ(ran, "bd");
    EXPECT_EQ(LogTrap::take(),
              (QStringList{"Model initializer 0x00000011 (ModelInitializer) failed: no room",
                           "Model initializer 0x00000013 (ModelInitializer) failed: unknown exception"}));
    model.initialize();
    EXPECT_EQ(ran, "bd");
}

TEST(ProjectModel, LaterCreatorOfATypeReplacesTheEarlier)
{
    CProjectModel model(nullptr);
    EXPECT_EQ(model.getCreator(0x101), nullptr);
    model.registerCreator(nullptr);
    model.registerCreator(std::make_unique<COrdinaryItemCreator<PointElement>>());
    auto second = std::make_unique<COrdinaryItemCreator<PointElement>>();
    const ModelElementCreator* last = second.get();
    model.registerCreator(std::move(second));
    EXPECT_EQ(model.getCreator(0x101), last);
    EXPECT_EQ(last->create()->getType(), 0x101);
}

// Beside a map of the standard library, with identifiers that lie close and far apart.
TEST(ElementTable, FindsWhatWasAddedAndNotRemoved)
{
    std::vector<PointElement> elements(64);
    const std::vector<LONGID> ids = {1,
                                     2,
                                     3,
                                     14,
                                     15,
                                     16,
                                     17,
                                     31,
                                     32,
                                     33,
                                     1'000'000,
                                     1'000'001,
                                     -1,
                                     -16,
                                     0,
                                     CProjectModel::largestId(),
                                     std::numeric_limits<LONGID>::max()};
    ElementTable table;
    std::map<LONGID, CModelElement*> expected;
    std::mt19937 random(7);
    for (int i = 0; i < 5000; ++i) {
        const LONGID id = ids[random() % ids.size()];
        if (random() % 2 == 0) {
            PointElement& element = elements[random() % elements.size()];
            EXPECT_EQ(table.add(id, element), expected.emplace(id, &element).second);
        } else {
            table.remove(id);
            expected.erase(id);
        }
        for (const LONGID other : ids) {
            const auto found = expected.find(other);
            ASSERT_EQ(table.find(other), found == expected.end() ? nullptr : found->second) << other;
        }
    }
}
