#include <viewer/Host.h>

#include <viewer/elements/ElementTypes.h>

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <Viewer3dModule/enums/TypeIds.h>
#include <Viewer3dModule/host/IScene3dExtension.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>
#include <framework/app/CSettingsManager.h>
#include <framework/app/IModelReader.h>
#include <framework/app/XmlSettingsStorage.h>
#include <framework/gmx/math_utils.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>

#include <QtCore/QDir>
#include <QtCore/QStandardPaths>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <algorithm>

namespace {

// Degrees. From behind the shoulder of who looks from the south, and not halfway between the walls of a house
// that stands along the axes, which would look alike.
constexpr double lightAzimuth = 210.0;
constexpr double lightElevation = 50.0;

QString settingsPath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    return folder.isEmpty() ? QString() : QDir(folder).filePath(QStringLiteral("settings.xml"));
}

/// A handler of the log for the length of a scope.
class LogHandler
{
public:
    explicit LogHandler(ksp::Log::Handler handler)
        : m_number(ksp::Log::addHandler(std::move(handler)))
    {
    }
    ~LogHandler() { ksp::Log::removeHandler(m_number); }
    LogHandler(const LogHandler&) = delete;
    LogHandler& operator=(const LogHandler&) = delete;

private:
    int m_number;
};

/// Throws when no context can be made here as a scene makes its own.
void requireOpenGL()
{
    const CurrentContextGuard callers;
    QOpenGLContext* share = QOpenGLContext::globalShareContext();
    QOpenGLContext context;
    QOffscreenSurface surface;
    if (share) {
        context.setFormat(share->format());
        context.setShareContext(share);
        surface.setFormat(share->format());
    }
    surface.create();
    if (!share || !context.create() || !context.makeCurrent(&surface))
        throw ksp::CommonError(QStringLiteral("there is no OpenGL on this display"));
    if (!currentGLFunctions())
        throw ksp::CommonError(
            QStringLiteral("the OpenGL driver of this display offers no 4.3 core profile"));
}

} // namespace

Host::Host(Settings settings)
    : m_keepsSettings(settings == Settings::Kept)
{
    const LogHandler recorder([this](ksp::Log::MessageType type, const QString& text) {
        m_startMessages.push_back({type, text});
    });
    auto storage = std::make_unique<XmlSettingsStorage>(m_keepsSettings ? settingsPath() : QString());
    View3dSettings::writeDefaults(*storage);
    CSettingsManager* manager =
        m_application.addSettingsManager(Application::SettingsManagerId, std::move(storage));
    m_application.loadPlugins(PluginLoader::defaultFolders());
    manager->load();
}

Host::~Host() = default;

void Host::requireModule() const
{
    const QString module = QStringLiteral("Viewer3dModule");
    QString reason;
    for (const PluginLoader::Plugin& plugin : m_application.getPlugins()) {
        // a file that is damaged has no class name to tell
        const QString name =
            plugin.className.isEmpty() ? QFileInfo(plugin.path).baseName() : plugin.className;
        if (name != module && name != QStringLiteral("lib") + module) continue;
        if (plugin.instance) return;
        if (reason.isEmpty()) reason = QStringLiteral("%1: %2").arg(plugin.path, plugin.error);
    }
    if (reason.isEmpty())
        reason = QStringLiteral("looked in %1; VIEWER3D_PLUGIN_PATH names further folders")
                     .arg(PluginLoader::defaultFolders().join(QStringLiteral(", ")));
    throw ksp::CommonError(QStringLiteral("the plug-in %1 cannot be loaded: %2").arg(module, reason));
}

std::unique_ptr<CProject> Host::createProject()
{
    requireModule();
    std::unique_ptr<CProject> project = m_application.createProject();
    element_types::registerCreators(*project->getModel());
    setOwnLight(*project);
    return project;
}

void Host::setOwnLight(CProject& project)
{
    auto* settings =
        dynamic_cast<Scene3dViewLightingSettings*>(project.getProjectSettings(TypeIds::LightingSettings));
    if (!settings) return;
    Scene3dViewLightingSettings::ViewData& light = settings->data({});
    light.azimuth = static_cast<float>(math_utils::toRadian(lightAzimuth));
    light.elevation = static_cast<float>(math_utils::toRadian(lightElevation));
}

std::unique_ptr<Scene3d> Host::createScene(CProject& project)
{
    requireOpenGL();
    auto scene = std::make_unique<Scene3d>(project.getModel(), nullptr);
    for (QObject* extension : m_application.getExtensions())
        if (auto* extender = qobject_cast<IScene3dExtension*>(extension)) extender->extendScene(scene.get());
    element_types::registerItems(*scene, m_pointSize);
    return scene;
}

IModelReader* Host::findModelReader(const QString& extension, const QString& path) const
{
    std::vector<IModelReader*> readers;
    for (QObject* object : m_application.getExtensions()) {
        auto* reader = qobject_cast<IModelReader*>(object);
        if (reader && reader->getExtensions().contains(extension)) readers.push_back(reader);
    }
    if (readers.size() < 2) return readers.empty() ? nullptr : readers.front();
    const auto found = std::find_if(readers.begin(), readers.end(),
                                    [&](const IModelReader* reader) { return reader->recognizes(path); });
    return found == readers.end() ? readers.front() : *found; // which says what is wrong with it
}

void Host::setReaderOption(const QString& name, const QVariant& value)
{
    for (QObject* object : m_application.getExtensions())
        if (auto* reader = qobject_cast<IModelReader*>(object)) reader->setOption(name, value);
}

QStringList Host::getExtensions() const
{
    QStringList extensions = {QStringLiteral("v3d")};
    for (const QString& extension : DrawableNode3dFactory::instance().getExtensions())
        extensions.append(extension);
    for (QObject* object : m_application.getExtensions())
        if (const auto* reader = qobject_cast<IModelReader*>(object))
            extensions.append(reader->getExtensions());
    extensions.removeDuplicates();
    extensions.sort();
    return extensions;
}

void Host::saveSettings()
{
    if (!m_keepsSettings || settingsPath().isEmpty()) return;
    QDir().mkpath(QFileInfo(settingsPath()).path());
    m_application.getSettingsManager(Application::SettingsManagerId)->save();
}
