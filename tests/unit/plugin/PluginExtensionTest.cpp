#include "PluginFixture.h"

#include <Viewer3dModule/enums/enums.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>
#include <Viewer3dModule/host/View3dSettings.h>

#include <framework/app/CSettingsManager.h>
#include <framework/app/EnumData.h>
#include <framework/app/XmlSettingsStorage.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

namespace {

constexpr int moduleId = 0x36FFC100;
constexpr int viewSettingsId = 0x36FF0700;
constexpr int lightingSettingsId = 0x36FFCE00;

CSettingsManager* addManager(Application& application)
{
    return application.addSettingsManager(0x0E1B5200, std::make_unique<XmlSettingsStorage>(QString()));
}

TEST_F(PluginTest, WithoutASettingsManagerStillSetsTheSearchPath)
{
    QDir::setSearchPaths("shader", {"/somewhere", "/else"});
    Application application;
    EXPECT_TRUE(app->extendApplication(&application, {}));
    EXPECT_EQ(QDir::searchPaths("shader"), QStringList{":/"});
    EXPECT_EQ(application.getSettings(viewSettingsId), nullptr);
}

TEST_F(PluginTest, ManagerOfAnotherIdentifierGetsNoSettings)
{
    Application application;
    application.addSettingsManager(1, std::make_unique<XmlSettingsStorage>(QString()));
    EXPECT_TRUE(app->extendApplication(&application, {}));
    EXPECT_EQ(application.getSettings(viewSettingsId), nullptr);
}

TEST_F(PluginTest, RegistersTheViewSettings)
{
    Application application;
    CSettingsManager* manager = addManager(application);
    EXPECT_TRUE(app->extendApplication(&application, {1, 2, 3}));
    View3dSettings* settings = View3dSettings::getInstance();
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(manager->getSettings(viewSettingsId), settings);
    EXPECT_EQ(settings->getStorage(), manager->getStorage());
    EXPECT_EQ(settings->parent(), plugin.instance);
    EXPECT_TRUE(settings->id3dEnabled()); // not loaded: the empty store would switch the view off
    EXPECT_EQ(settings->getNodeSize(), 15);
}

TEST_F(PluginTest, ViewSettingsEndWithTheApplication)
{
    const int before = plugin.instance->children().size();
    {
        Application application;
        addManager(application);
        app->extendApplication(&application, {});
        EXPECT_EQ(plugin.instance->children().size(), before + 1);
        app->unextendApplication(&application);
    }
    EXPECT_EQ(plugin.instance->children().size(), before);
}

TEST_F(PluginTest, ShaderSourcesAreFoundByTheirPrefix)
{
    Application application;
    app->extendApplication(&application, {});
    // what the eight programs that every scene has are made of, with what these include
    const QStringList sources = {"common.vertex",  "dashedLines.vertex",     "dummy.vertex",
                                 "WideLines.geom", "SolidRegularLines.geom", "caption.geom",
                                 "mono.fragment",  "texture.fragment",       "dashedLines.fragment",
                                 "mesh.fragment",  "light.fragment",         "DrawModes",
                                 "SelectionMode",  "GluePriority",           "Quaternion"};
    for (const QString& source : sources) {
        QFile file("shader:Viewer3dModule/" + source + ".glsl");
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(source);
        EXPECT_GT(file.size(), 0) << qPrintable(source);
    }
}

TEST_F(PluginTest, ModelGetsOneInitializer)
{
    CProject project;
    CProjectModel* projectModel = project.getModel();
    EXPECT_EQ(projectModel->getInitializer(moduleId), nullptr);
    model->extendModel(projectModel);
    ModelInitializer* initializer = projectModel->getInitializer(moduleId);
    ASSERT_NE(initializer, nullptr);
    EXPECT_EQ(initializer->getModel(), projectModel);
    model->extendModel(projectModel);
    EXPECT_EQ(projectModel->getInitializer(moduleId), initializer);
}

TEST_F(PluginTest, InitializerAddsTheLightingSettingsAndTheFence)
{
    CProject project;
    model->extendModel(project.getModel());
    EXPECT_EQ(project.getProjectSettings(lightingSettingsId), nullptr);
    project.getModel()->initialize();
    ASSERT_EQ(project.getAllProjectSettings().size(), 2u);
    const auto* lighting = Scene3dViewLightingSettings::find(project.getModel());
    ASSERT_NE(lighting, nullptr);
    EXPECT_EQ(lighting, project.getProjectSettings(lightingSettingsId));
    EXPECT_TRUE(lighting->getViews().empty());
    const auto* fence = Fence3dItem::find(project.getModel());
    ASSERT_NE(fence, nullptr);
    EXPECT_EQ(fence, project.getProjectSettings(0x36FF1100));
    EXPECT_EQ(project.getProjectSettingsFlags(0x36FF1100), 4);
    EXPECT_TRUE(fence->empty());
    EXPECT_EQ(Fence3dItem::find(nullptr), nullptr);
}

TEST_F(PluginTest, LightingSettingsAreStoredWithTheProject)
{
    CProject project;
    model->extendModel(project.getModel());
    project.getModel()->initialize();
    EXPECT_EQ(project.getProjectSettingsFlags(lightingSettingsId), 4);
    EXPECT_EQ(project.getProjectSettingsFlags(4711), 0);
}

TEST_F(PluginTest, ModelWithoutAProjectIsLeftAsItIs)
{
    CProjectModel alone(nullptr);
    model->extendModel(&alone);
    alone.initialize();
    EXPECT_NE(alone.getInitializer(moduleId), nullptr);
}

TEST_F(PluginTest, WindowGetsNothing)
{
    class Window : public ProjectGUI
    {
    public:
        QObject* getMainWindow() const override
        {
            asked = true;
            return nullptr;
        }
        mutable bool asked = false;
    } window;
    gui->extendGUI(&window);
    gui->extendGUI(nullptr);
    EXPECT_FALSE(window.asked);
}

TEST_F(PluginTest, ServesAnApplicationAndKeepsTheLightsOfItsProjects)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    Application application;
    addManager(application);
    ASSERT_TRUE(application.addExtension(plugin.instance));

    const std::unique_ptr<CProject> project = application.createProject();
    auto* lighting =
        static_cast<Scene3dViewLightingSettings*>(project->getProjectSettings(lightingSettingsId));
    ASSERT_NE(lighting, nullptr);
    lighting->addView("top", L"Top");
    lighting->data("top").azimuth = 1.5f;
    project->save(folder.filePath("project"));

    const std::unique_ptr<CProject> opened = application.createProject();
    opened->open(folder.filePath("project"));
    const auto* found = Scene3dViewLightingSettings::find(opened->getModel());
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->getView("top").azimuth, 1.5f);
    EXPECT_EQ(found->getView("top").caption, L"Top");

    opened->clear();
    EXPECT_TRUE(Scene3dViewLightingSettings::find(opened->getModel())->getViews().empty());
}

TEST_F(PluginTest, IsLoadedAndExtendedByTheApplication)
{
    Application application;
    addManager(application);
    application.loadPlugins({pluginFolder()});
    EXPECT_EQ(findModule(application.getPlugins()).instance, plugin.instance);
    EXPECT_NE(View3dSettings::getInstance(), nullptr);
    EXPECT_NE(Scene3dViewLightingSettings::find(application.createProject()->getModel()), nullptr);
}

/// The records of the module, in the order of their registration.
std::vector<EnumData> moduleRecords()
{
    std::vector<EnumData> records;
    for (const EnumData& record : getEnumData())
        if ((record.id & ~0xFFFF) == 0x36FF0000) records.push_back(record);
    return records;
}

TEST_F(PluginTest, RegistersItsFiveRecordsOnceAndInOrder)
{
    Application application;
    app->extendApplication(&application, {});
    enums::initEnumData();
    enums::initEnumData();
    const std::vector<EnumData> expected{
        {0x36FF1100, "Fence3d", QString::fromUtf8("ограничение видимости")},
        {0x36FFCE00, "Scene3dViewLightingSettings", QString::fromUtf8("Настройки освещения")},
        {0x36FFC100, "Viewer3dModule", {}},
        {0x36FF0700, "View3dSettings", QString::fromUtf8("настройки 3d окна")},
        {0x36FF9100, "View3dScene_filter", {}}};
    const std::vector<EnumData> records = moduleRecords();
    ASSERT_EQ(records.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(records[i].id, expected[i].id);
        EXPECT_EQ(records[i].key, expected[i].key);
        EXPECT_EQ(records[i].caption, expected[i].caption);
    }
}

TEST_F(PluginTest, RecordsAreFoundByIdentifierAndKey)
{
    enums::initEnumData();
    const EnumData* record = findEnumData(moduleId);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->key, "Viewer3dModule");
    EXPECT_EQ(findEnumData(QString("Viewer3dModule")), record);
}

} // namespace
