#include <framework/app/Application.h>

#include <framework/app/CSettingsManager.h>
#include <framework/app/EnumData.h>
#include <framework/app/IAppExtension.h>
#include <framework/app/IModelExtension.h>
#include <framework/app/ProjectGUI.h>
#include <framework/ksp/Log.h>
#include <framework/ksp/runGuarded.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QPointer>

#include <algorithm>
#include <functional>

namespace {

Application* theApplication = nullptr;

/// The interface of an object, by its identifier or, where the class does not declare it, by the name of the
/// base class, which every meta-object answers.
template <typename Interface>
Interface* interfaceOf(QObject* object, const char* name)
{
    if (auto* found = qobject_cast<Interface*>(object)) return found;
    return static_cast<Interface*>(object->qt_metacast(name));
}

constexpr const char* appInterface = "IAppExtension";

/// Lets each extension that has the interface do a step; one that throws goes to the log. Any of them may
/// destroy others, or itself.
template <typename Interface>
void forEach(const std::vector<QObject*>& extensions, const char* interfaceName, const char* step,
             const std::function<void(Interface*)>& work)
{
    const std::vector<QPointer<QObject>> all(extensions.begin(), extensions.end());
    for (const QPointer<QObject>& extension : all) {
        Interface* found = extension ? interfaceOf<Interface>(extension, interfaceName) : nullptr;
        if (!found) continue;
        const QString name = QLatin1String(extension->metaObject()->className());
        const QString error = ksp::runGuarded([&] { work(found); });
        if (!error.isEmpty())
            ksp::Log::error(QStringLiteral("%1: %2 failed: %3").arg(name, QLatin1String(step), error));
    }
}

} // namespace

Application::Application(QObject* parent)
    : QObject(parent)
{
    if (theApplication)
        ksp::Log::error(QStringLiteral("There is an Application already; the first one stays the instance"));
    else
        theApplication = this;
}

Application::~Application()
{
    while (!m_extensions.empty()) {
        const std::vector<QObject*> last = {m_extensions.back()};
        m_extensions.pop_back();
        forEach<IAppExtension>(last, appInterface, "unextendApplication",
                               [this](IAppExtension* app) { app->unextendApplication(this); });
    }
    m_managers.clear();
    if (theApplication == this) theApplication = nullptr;
}

Application* Application::instance()
{
    return theApplication;
}

CSettingsManager* Application::addSettingsManager(int id, std::unique_ptr<ISettingsStorage> storage)
{
    std::unique_ptr<CSettingsManager>& manager = m_managers[id];
    if (!manager) manager = std::make_unique<CSettingsManager>(std::move(storage));
    return manager.get();
}

CSettingsManager* Application::getSettingsManager(int id) const
{
    const auto found = m_managers.find(id);
    return found == m_managers.end() ? nullptr : found->second.get();
}

void Application::registerSettings(int managerId, int type, CSettings* settings)
{
    if (CSettingsManager* manager = getSettingsManager(managerId)) {
        manager->addSettings(type, settings);
        return;
    }
    ksp::Log::error(QStringLiteral("Settings 0x%1 are dropped: there is no settings manager 0x%2")
                        .arg(static_cast<unsigned>(type), 8, 16, QLatin1Char('0'))
                        .arg(static_cast<unsigned>(managerId), 8, 16, QLatin1Char('0')));
    delete settings;
}

CSettings* Application::getSettings(int type) const
{
    for (const auto& entry : m_managers)
        if (CSettings* settings = entry.second->getSettings(type)) return settings;
    return nullptr;
}

void Application::loadPlugins(const QStringList& folders)
{
    const std::size_t first = m_loader.getPlugins().size();
    m_loader.load(folders);
    for (std::size_t i = first; i < m_loader.getPlugins().size(); ++i) {
        const PluginLoader::Plugin plugin = m_loader.getPlugins()[i];
        if (!plugin.instance) continue;
        const QString error = extend(plugin.instance);
        if (error.isEmpty()) continue;
        m_loader.refuse(i, error);
        ksp::Log::warning(QStringLiteral("%1: plug-in does not serve: %2").arg(plugin.path, error));
    }
}

bool Application::addExtension(QObject* extension)
{
    const QString error = extend(extension);
    if (error.isEmpty()) return true;
    ksp::Log::warning(QStringLiteral("%1: extension does not serve: %2")
                          .arg(QLatin1String(extension->metaObject()->className()), error));
    return false;
}

QString Application::extend(QObject* extension)
{
    if (std::find(m_extensions.begin(), m_extensions.end(), extension) != m_extensions.end()) return {};
    if (auto* app = interfaceOf<IAppExtension>(extension, appInterface)) {
        bool serves = false;
        const QString error =
            ksp::runGuarded([&] { serves = app->extendApplication(this, getExtensionIds()); });
        if (!error.isEmpty()) return QStringLiteral("extendApplication failed: %1").arg(error);
        if (!serves) return QStringLiteral("extendApplication refused");
    }
    m_extensions.push_back(extension);
    connect(extension, &QObject::destroyed, this, [this](QObject* gone) {
        m_extensions.erase(std::remove(m_extensions.begin(), m_extensions.end(), gone), m_extensions.end());
    });
    return {};
}

std::vector<int> Application::getExtensionIds() const
{
    std::vector<int> ids;
    for (const QObject* extension : m_extensions)
        if (const EnumData* data = findEnumData(QLatin1String(extension->metaObject()->className())))
            ids.push_back(data->id);
    return ids;
}

void Application::extendGUI(ProjectGUI* gui)
{
    forEach<ProjectGUI::IExtender>(m_extensions, "ProjectGUI::IExtender", "extendGUI",
                                   [gui](ProjectGUI::IExtender* extender) { extender->extendGUI(gui); });
}

std::unique_ptr<CProject> Application::createProject()
{
    auto project = std::make_unique<CProject>();
    CProjectModel* model = project->getModel();
    forEach<IModelExtension>(m_extensions, "IModelExtension", "extendModel",
                             [model](IModelExtension* extender) { extender->extendModel(model); });
    model->initialize();
    return project;
}
