#include "ModelFixtures.h"

#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Tells through a counter how many of its kind live.
class CountedCreator : public COrdinaryItemCreator<LightElement>
{
public:
    explicit CountedCreator(int& alive)
        : m_alive(alive)
    {
        ++m_alive;
    }
    ~CountedCreator() override { --m_alive; }

private:
    int& m_alive;
};

class BarrenCreator : public ModelElementCreator
{
public:
    int getType() const override { return 0x201; }
    std::unique_ptr<CModelElement> create() const override { return nullptr; }
};

} // namespace

TEST(Project, StartsEmpty)
{
    CProject project;
    EXPECT_EQ(project.getModel()->getProject(), &project);
    EXPECT_EQ(project.getModel()->getElementsCount(), 0);
    EXPECT_EQ(project.getPath(), QString());
    EXPECT_EQ(project.getProjectSettings(0x201), nullptr);
    EXPECT_THAT(project.getAllProjectSettings(), IsEmpty());
}

TEST(Project, MakesSettingsByTheCreator)
{
    CProject project;
    addSettings<CameraElement>(project);
    addSettings<LightElement>(project, 0);
    CModelElement* camera = project.getProjectSettings(0x202);
    CModelElement* light = project.getProjectSettings(0x201);
    ASSERT_NE(light, nullptr);
    EXPECT_EQ(light->getType(), 0x201);
    EXPECT_THAT(project.getAllProjectSettings(), ElementsAre(camera, light));
}

TEST(Project, OwnsTheCreators)
{
    int alive = 0;
    {
        CProject project;
        project.addProjectSettings(new CountedCreator(alive), 4);
        project.addProjectSettings(new CountedCreator(alive), 4);
        EXPECT_EQ(alive, 1);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Project, TypeThatIsThereKeepsItsElement)
{
    CProject project;
    addSettings<LightElement>(project);
    CModelElement* light = project.getProjectSettings(0x201);
    addSettings<LightElement>(project);
    EXPECT_EQ(project.getProjectSettings(0x201), light);
    EXPECT_EQ(project.getAllProjectSettings().size(), 1u);
}

TEST(Project, NullAndBarrenCreatorsAddNothing)
{
    CProject project;
    project.addProjectSettings(nullptr, 4);
    project.addProjectSettings(new BarrenCreator, 4);
    EXPECT_THAT(project.getAllProjectSettings(), IsEmpty());
}

TEST(Project, ClearMakesItNew)
{
    CProject project;
    addSettings<LightElement>(project);
    addSettings<CameraElement>(project, CProject::VolatileSettings);
    static_cast<LightElement*>(project.getProjectSettings(0x201))->number = 5;
    static_cast<CameraElement*>(project.getProjectSettings(0x202))->number = 6;
    project.getModel()->getCreateItemManager(0x101)->addItem(std::make_unique<PointElement>());
    std::vector<int> replaced;
    QObject::connect(&project, &CProject::projectSettingsReplaced,
                     [&](int type) { replaced.push_back(type); });

    project.clear();
    EXPECT_EQ(project.getModel()->getElementsCount(), 0);
    EXPECT_EQ(static_cast<LightElement*>(project.getProjectSettings(0x201))->number, 0);
    EXPECT_EQ(static_cast<CameraElement*>(project.getProjectSettings(0x202))->number, 0);
    EXPECT_THAT(replaced, ElementsAre(0x201, 0x202));
}

TEST(Project, SettingsLiveWhileTheElementsGo)
{
    Extension extension;
    auto project = std::make_unique<CProject>();
    addSettings<LightElement>(*project);
    CModelElementManager* points = project->getModel()->getCreateItemManager(0x101);
    points->registerExtension(&extension);
    points->addItem(std::make_unique<PointElement>());
    int asked = 0;
    extension.onRemoved = [&, raw = project.get()](const auto&) {
        ++asked;
        EXPECT_NE(raw->getProjectSettings(0x201), nullptr);
        EXPECT_NE(raw->getModel(), nullptr);
    };
    project.reset();
    EXPECT_EQ(asked, 1);
}
