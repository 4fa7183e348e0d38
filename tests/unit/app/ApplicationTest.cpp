#include "WholeFiles.h"

#include "tests/support/LogTrap.h"

#include <framework/app/Application.h>
#include <framework/app/CSettings.h>
#include <framework/app/CSettingsManager.h>
#include <framework/app/EnumData.h>
#include <framework/app/IAppExtension.h>
#include <framework/app/IModelExtension.h>
#include <framework/app/ProjectGUI.h>
#include <framework/app/XmlSettingsStorage.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <sys/stat.h>

namespace {

QStringList takeCalls()
{
    QCoreApplication* application = QCoreApplication::instance(); // qApp takes it for a QGuiApplication
    const QStringList calls = application->property("pluginCalls").toStringList();
    application->setProperty("pluginCalls", QStringList());
    return calls;
}

/// A folder of copies of the test plug-ins.
class PluginFolder
{
public:
    /// Copies the library of a plug-in; returns where to.
    QString add(const QString& plugin, const QString& as = {})
    {
        const QString to = path("lib" + (as.isEmpty() ? plugin : as) + ".so");
        EXPECT_TRUE(QFile::copy(TEST_PLUGIN_DIR "/lib" + plugin + ".so", to)) << qPrintable(plugin);
        return to;
    }
    QString path(const QString& name = {}) const
    {
        return name.isEmpty() ? m_folder.path() : m_folder.filePath(name);
    }

private:
    QTemporaryDir m_folder;
};

/// Loads one file; returns what became of it, and expects the one line of warning that goes with an error.
PluginLoader::Plugin loadOne(const PluginFolder& folder)
{
    PluginLoader loader;
    loader.load({folder.path()});
    EXPECT_EQ(loader.getPlugins().size(), 1u);
    const PluginLoader::Plugin plugin = loader.getPlugins().at(0);
    const QStringList log = LogTrap::take();
    EXPECT_EQ(log.size(), plugin.error.isEmpty() ? 0 : 1);
    EXPECT_FALSE(plugin.error.contains('\n'));
    EXPECT_EQ(plugin.instance == nullptr, !plugin.error.isEmpty());
    if (!log.isEmpty()) {
        EXPECT_EQ(log[0], plugin.path + ": plug-in not loaded: " + plugin.error);
    }
    return plugin;
}

} // namespace

class PluginTest : public testing::Test
{
protected:
    PluginTest() { takeCalls(); }
    PluginFolder folder;
};

// --- PluginLoader ---

TEST_F(PluginTest, goodPluginIsLoadedWithItsMetadata)
{
    const QString path = folder.add("GoodPlugin");
    const PluginLoader::Plugin plugin = loadOne(folder);
    EXPECT_EQ(plugin.path, path);
    EXPECT_EQ(plugin.iid, "org.example.GoodPlugin");
    EXPECT_EQ(plugin.className, "GoodPlugin");
    EXPECT_EQ(plugin.metaData.value("Version").toInt(), 3);
    EXPECT_EQ(plugin.error, "");
    ASSERT_NE(plugin.instance, nullptr);
    EXPECT_NE(qobject_cast<IAppExtension*>(plugin.instance), nullptr);
}

TEST_F(PluginTest, metadataObjectMayBeMissing)
{
    folder.add("ClumsyPlugin");
    const PluginLoader::Plugin plugin = loadOne(folder);
    EXPECT_NE(plugin.instance, nullptr);
    EXPECT_TRUE(plugin.metaData.isEmpty());
}

TEST_F(PluginTest, fileThatIsNoLibraryIsListed)
{
    writeFile(folder.path("libx.so"), "just text");
    EXPECT_EQ(loadOne(folder).error, "not a shared library");
}

TEST_F(PluginTest, emptyFileIsListed)
{
    writeFile(folder.path("libx.so"), "");
    EXPECT_EQ(loadOne(folder).error, "not a shared library");
}

TEST_F(PluginTest, pipesAndDevicesAreListedUnopened)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(folder.path("liba.so")).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link("/dev/zero", folder.path("libb.so")));
    ASSERT_TRUE(QFile::link(folder.path("liba.so"), folder.path("libc.so")));
    PluginLoader loader;
    loader.load({folder.path()});
    ASSERT_EQ(loader.getPlugins().size(), 2u); // the last is the first by another name
    for (const PluginLoader::Plugin& plugin : loader.getPlugins())
        EXPECT_EQ(plugin.error, "not a regular file") << qPrintable(plugin.path);
    EXPECT_EQ(LogTrap::take().size(), 2);
}

TEST_F(PluginTest, brokenLinkIsListed)
{
    ASSERT_TRUE(QFile::link(folder.path("nowhere"), folder.path("libx.so")));
    EXPECT_EQ(loadOne(folder).error, "not a shared library");
}

TEST_F(PluginTest, ordinaryLibraryIsListed)
{
    folder.add("PlainLibrary");
    EXPECT_EQ(loadOne(folder).error, "no plug-in metadata");
}

TEST_F(PluginTest, truncatedLibraryIsListed)
{
    const QByteArray bytes = readFile(TEST_PLUGIN_DIR "/libGoodPlugin.so");
    writeFile(folder.path("libx.so"), bytes.left(bytes.size() / 2));
    EXPECT_NE(loadOne(folder).error, "");
}

TEST_F(PluginTest, wrongQtVersionIsListedAndNamed)
{
    QByteArray bytes = readFile(TEST_PLUGIN_DIR "/libGoodPlugin.so");
    const int mark = bytes.indexOf("QTMETADATA ");
    ASSERT_GE(mark, 0);
    ASSERT_EQ(bytes[mark + 14], char(15)); // after the mark of 12 bytes: format, major and minor version
    bytes[mark + 14] = char(99);
    writeFile(folder.path("libx.so"), bytes);
    const PluginLoader::Plugin plugin = loadOne(folder);
    EXPECT_TRUE(plugin.error.contains("5.99")) << qPrintable(plugin.error);
    EXPECT_EQ(plugin.className, "GoodPlugin");
}

TEST_F(PluginTest, unresolvedSymbolIsListedAndNamed)
{
    folder.add("UnresolvedPlugin");
    const PluginLoader::Plugin plugin = loadOne(folder);
    EXPECT_TRUE(plugin.error.contains("functionThatNobodyDefines")) << qPrintable(plugin.error);
    EXPECT_EQ(plugin.className, "UnresolvedPlugin");
}

TEST_F(PluginTest, constructorThatThrowsIsListed)
{
    folder.add("UnbornPlugin");
    EXPECT_EQ(loadOne(folder).error, "the plug-in object cannot be made: no room");
}

TEST_F(PluginTest, emptyInterfaceIdentifierIsListed)
{
    // the identifier is entry 2 of the metadata, a text of 22 bytes: made empty, and its bytes given to an
    // entry "x", so that the metadata stays well-formed
    QByteArray bytes = readFile(TEST_PLUGIN_DIR "/libGoodPlugin.so");
    const int entry = bytes.indexOf(QByteArray("\x02\x76") + "org.example.GoodPlugin");
    ASSERT_GE(entry, 0);
    bytes.replace(entry, 24, QByteArray("\x02\x60\x61x\x73") + QByteArray(19, 'y'));
    writeFile(folder.path("libx.so"), bytes);
    EXPECT_EQ(loadOne(folder).error, "no interface identifier in the plug-in metadata");
}

TEST_F(PluginTest, classThatWasLoadedIsListedAsADuplicate)
{
    const QString first = folder.add("GoodPlugin", "a");
    const QString second = folder.add("GoodPlugin", "b");
    PluginLoader loader;
    loader.load({folder.path()});
    ASSERT_EQ(loader.getPlugins().size(), 2u);
    EXPECT_NE(loader.getPlugins()[0].instance, nullptr);
    EXPECT_EQ(loader.getPlugins()[1].path, second);
    EXPECT_EQ(loader.getPlugins()[1].instance, nullptr);
    EXPECT_EQ(loader.getPlugins()[1].error, "duplicate: GoodPlugin was loaded from " + first);
}

TEST_F(PluginTest, sameFileIsListedOnce)
{
    folder.add("PlainLibrary");
    QFile::link(folder.path("libPlainLibrary.so"), folder.path("libz.so.1"));
    PluginLoader loader;
    loader.load({folder.path(), folder.path() + "/."});
    loader.load({folder.path()});
    EXPECT_EQ(loader.getPlugins().size(), 1u);
    EXPECT_EQ(LogTrap::take().size(), 1);
}

TEST_F(PluginTest, foldersAreTakenInOrderAndFilesByName)
{
    PluginFolder second;
    second.add("ClumsyPlugin", "1");
    folder.add("RefusingPlugin", "b");
    folder.add("GoodPlugin", "a");
    writeFile(folder.path("readme.txt"), "no library");
    PluginLoader loader;
    loader.load({"/no/such/folder", folder.path(), second.path()});
    QStringList names;
    for (const PluginLoader::Plugin& plugin : loader.getPlugins())
        names << plugin.className;
    EXPECT_EQ(names, (QStringList{"GoodPlugin", "RefusingPlugin", "ClumsyPlugin"}));
}

TEST(PluginFolders, environmentComesFirstThenTheLibraryThenTheProgram)
{
    qputenv("VIEWER3D_PLUGIN_PATH", "/one:/two/../three::/one");
    const QStringList folders = PluginLoader::defaultFolders();
    qunsetenv("VIEWER3D_PLUGIN_PATH");
    const QString program = QCoreApplication::applicationDirPath();
    EXPECT_EQ(folders.mid(0, 3), (QStringList{"/one", "/three", V3D_BINARY_DIR "/lib/viewer3d/plugins"}));
    EXPECT_GT(folders.indexOf(program + "/plugins"), 2);
    EXPECT_TRUE(folders.contains(QDir::cleanPath(program + "/../lib/viewer3d/plugins")));
    EXPECT_EQ(folders.count("/one"), 1);
}

// --- Application ---

using ApplicationPlugins = PluginTest;

TEST_F(ApplicationPlugins, serveInTheOrderOfLoadingAndLeaveInReverse)
{
    if (!findEnumData(QString("GoodPlugin"))) registerEnumData({0x7E578001, "GoodPlugin", {}});
    folder.add("GoodPlugin", "a");
    folder.add("ClumsyPlugin", "b");
    {
        Application application;
        application.loadPlugins({folder.path()});
        EXPECT_EQ(takeCalls(),
                  (QStringList{"Good.extendApplication after 0", "Clumsy.extendApplication after 1"}));
        EXPECT_EQ(application.getExtensions().size(), 2u);
    }
    EXPECT_EQ(takeCalls(), (QStringList{"Clumsy.unextendApplication", "Good.unextendApplication"}));
    EXPECT_EQ(LogTrap::take(), QStringList{"ClumsyPlugin: unextendApplication failed: unknown exception"});
}

TEST_F(ApplicationPlugins, extendEveryProjectEvenWhenOneThrows)
{
    folder.add("ClumsyPlugin", "a");
    folder.add("GoodPlugin", "b");
    {
        Application application;
        application.loadPlugins({folder.path()});
        takeCalls();
        EXPECT_NE(application.createProject(), nullptr);
        EXPECT_EQ(takeCalls(), (QStringList{"Clumsy.extendModel", "Good.extendModel"}));
        EXPECT_EQ(LogTrap::take(), QStringList{"ClumsyPlugin: extendModel failed: no model"});
        application.extendGUI(nullptr);
        EXPECT_EQ(takeCalls(), (QStringList{"Clumsy.extendGUI", "Good.extendGUI"}));
        EXPECT_EQ(LogTrap::take(), QStringList{"ClumsyPlugin: extendGUI failed: no window"});
    }
    EXPECT_EQ(LogTrap::take(), QStringList{"ClumsyPlugin: unextendApplication failed: unknown exception"});
}

TEST_F(ApplicationPlugins, thatThrowOrRefuseAreListedAndTheOthersServe)
{
    folder.add("ThrowingPlugin", "a");
    folder.add("RefusingPlugin", "b");
    writeFile(folder.path("libc.so"), "no library");
    folder.add("GoodPlugin", "d");
    Application application;
    application.loadPlugins({folder.path()});
    const auto& plugins = application.getPlugins();
    ASSERT_EQ(plugins.size(), 4u);
    EXPECT_EQ(plugins[0].error, "extendApplication failed: no licence");
    EXPECT_EQ(plugins[1].error, "extendApplication refused");
    EXPECT_EQ(plugins[2].error, "not a shared library");
    EXPECT_EQ(plugins[3].error, "");
    EXPECT_EQ(plugins[0].instance, nullptr);
    EXPECT_EQ(plugins[1].instance, nullptr);
    EXPECT_EQ(application.getExtensions(), std::vector<QObject*>{plugins[3].instance});
    EXPECT_EQ(LogTrap::take().size(), 3);
    application.loadPlugins({folder.path()});
    EXPECT_EQ(plugins.size(), 4u);
}

namespace {

/// A host's own part.
struct OwnPart : QObject, IAppExtension
{
    bool extendApplication(Application* application, const std::vector<int>&) override
    {
        EXPECT_EQ(application, Application::instance());
        ++extended;
        return serves;
    }
    void unextendApplication(Application*) override { ++unextended; }
    void* qt_metacast(const char* name) override
    {
        if (qstrcmp(name, "IAppExtension") == 0) return static_cast<IAppExtension*>(this);
        return QObject::qt_metacast(name);
    }
    bool serves = true;
    int extended = 0;
    int unextended = 0;
};

/// Extends models and windows by doing what the test says.
struct Extender : QObject, IModelExtension, ProjectGUI::IExtender
{
    explicit Extender(std::function<void()> reaction)
        : react(std::move(reaction))
    {
    }
    void extendModel(CProjectModel*) override { react(); }
    void extendGUI(ProjectGUI*) override { react(); }
    void* qt_metacast(const char* name) override
    {
        if (qstrcmp(name, "IModelExtension") == 0) return static_cast<IModelExtension*>(this);
        if (qstrcmp(name, "ProjectGUI::IExtender") == 0) return static_cast<ProjectGUI::IExtender*>(this);
        return QObject::qt_metacast(name);
    }
    std::function<void()> react;
};

} // namespace

TEST(Application, ownPartsExtendIt)
{
    OwnPart part;
    {
        Application application;
        EXPECT_TRUE(application.addExtension(&part));
        EXPECT_TRUE(application.addExtension(&part)); // is there already
        EXPECT_EQ(application.getExtensions(), std::vector<QObject*>{&part});
    }
    EXPECT_EQ(part.extended, 1);
    EXPECT_EQ(part.unextended, 1);
}

TEST(Application, partThatRefusesDoesNotServe)
{
    OwnPart part;
    part.serves = false;
    {
        Application application;
        EXPECT_FALSE(application.addExtension(&part));
        EXPECT_TRUE(application.getExtensions().empty());
    }
    EXPECT_EQ(LogTrap::take(), QStringList{"QObject: extension does not serve: extendApplication refused"});
    EXPECT_EQ(part.unextended, 0);
}

TEST(Application, partThatIsDestroyedIsLeftOut)
{
    Application application;
    {
        OwnPart part;
        application.addExtension(&part);
    }
    EXPECT_TRUE(application.getExtensions().empty());
    EXPECT_NE(application.createProject(), nullptr);
}

TEST(Application, extensionsThatGoWhileOthersExtendAreLeftOut)
{
    for (const bool model : {true, false}) {
        std::string ran;
        auto* third = new Extender([&] { ran += 'c'; });
        auto* second = new Extender([&] { ran += 'b'; });
        Extender* first = nullptr;
        first = new Extender([&] {
            ran += 'a';
            delete second;
            delete first;
            throw std::runtime_error("gone");
        });
        Application application;
        for (Extender* extender : {first, second, third})
            ASSERT_TRUE(application.addExtension(extender));
        if (model)
            EXPECT_NE(application.createProject(), nullptr);
        else
            application.extendGUI(nullptr);
        EXPECT_EQ(ran, "ac");
        EXPECT_EQ(application.getExtensions(), std::vector<QObject*>{third});
        const QString step = model ? "extendModel" : "extendGUI";
        EXPECT_EQ(LogTrap::take(), QStringList{"QObject: " + step + " failed: gone"});
        delete third;
    }
}

TEST(Application, instanceIsTheOneThatLives)
{
    EXPECT_EQ(Application::instance(), nullptr);
    {
        Application application;
        EXPECT_EQ(Application::instance(), &application);
        {
            Application second;
            EXPECT_EQ(Application::instance(), &application);
        }
        EXPECT_EQ(Application::instance(), &application);
    }
    EXPECT_EQ(Application::instance(), nullptr);
    EXPECT_EQ(LogTrap::take().size(), 1);
}

TEST(Application, settingsAreFoundInWhicheverManager)
{
    Application application;
    CSettingsManager* first =
        application.addSettingsManager(1, std::make_unique<XmlSettingsStorage>(QString()));
    application.addSettingsManager(2, std::make_unique<XmlSettingsStorage>(QString()));
    EXPECT_EQ(application.addSettingsManager(1, nullptr), first);
    EXPECT_NE(first->getStorage(), nullptr);
    EXPECT_EQ(application.getSettingsManager(1), first);
    EXPECT_EQ(application.getSettingsManager(3), nullptr);
    auto* settings = new CSettings(first->getStorage(), nullptr);
    application.registerSettings(2, 77, settings);
    EXPECT_EQ(application.getSettings(77), settings);
    EXPECT_EQ(application.getSettings(78), nullptr);
}

TEST(Application, settingsForNoManagerAreDestroyedWithALine)
{
    Application application;
    const QPointer<CSettings> settings = new CSettings(nullptr, nullptr);
    application.registerSettings(5, 0x36FF0700, settings);
    EXPECT_TRUE(settings.isNull());
    EXPECT_EQ(LogTrap::take(),
              QStringList{"Settings 0x36ff0700 are dropped: there is no settings manager 0x00000005"});
}

TEST(Application, newProjectIsInitialised)
{
    struct Initializer : ModelInitializer
    {
        Initializer(CProjectModel* model, int& counter)
            : ModelInitializer(model)
            , runs(counter)
        {
        }
        void initialize() override { ++runs; }
        int& runs;
    };
    Application application;
    int runs = 0;
    const auto project = application.createProject();
    project->getModel()->addInitializer(1, std::make_unique<Initializer>(project->getModel(), runs));
    EXPECT_EQ(runs, 1); // at once, since the model is initialised
}
