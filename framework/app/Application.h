#pragma once

#include <framework/HostFramework_export.h>
#include <framework/app/PluginLoader.h>
#include <framework/ksp/StagedProgress.h>

#include <QtCore/QObject>

#include <map>
#include <memory>
#include <vector>

class CProject;
class CSettings;
class CSettingsManager;
class IAppExtension;
class ISettingsStorage;
class ProjectGUI;

/// The host application: its settings managers, its plug-ins and its projects. One object a process, made by
/// the host after the Qt application object.
class HOSTFRAMEWORK_EXPORT Application : public QObject
{
    Q_OBJECT
public:
    /// Identifier of the manager of the application's own settings.
    static constexpr int SettingsManagerId = 0x0E1B5200;

    explicit Application(QObject* parent = nullptr);
    ~Application() override;
    /// The object, or null.
    static Application* instance();

    /// Adds a settings manager over a store; an earlier one of the identifier stays and the store is dropped.
    CSettingsManager* addSettingsManager(int id, std::unique_ptr<ISettingsStorage> storage);
    /// The manager, or null.
    CSettingsManager* getSettingsManager(int id) const;
    /// Hands a settings object to a manager, which takes it; without such a manager the object is destroyed,
    /// with a line in the log.
    void registerSettings(int managerId, int type, CSettings* settings);
    /// The settings object of the type, in whichever manager, or null.
    CSettings* getSettings(int type) const;

    /// Loads the plug-ins of the folders and extends the application by them, in the order in which they
    /// load. A plug-in that throws or returns false then is listed as failed and does not serve.
    void loadPlugins(const QStringList& folders);
    /// Extends the application by an object that is no plug-in file (a host's own part); not owned, and left
    /// out once it is destroyed. Returns false, with a line in the log, when it cannot serve.
    bool addExtension(QObject* extension);
    const std::vector<PluginLoader::Plugin>& getPlugins() const { return m_loader.getPlugins(); }
    /// Plug-in objects and further extensions that serve, in order.
    const std::vector<QObject*>& getExtensions() const { return m_extensions; }
    /// Lets every extension that extends windows extend this one. What one throws goes to the log.
    void extendGUI(ProjectGUI* gui);

    /// A new project, its model extended by every extension and initialised. The caller owns it. What an
    /// extension throws goes to the log, and the others go on.
    std::unique_ptr<CProject> createProject();

private:
    /// Returns why the extension cannot serve, or an empty text.
    QString extend(QObject* extension);
    /// The identifiers of the extensions that serve: those of the enumeration records by their class names.
    std::vector<int> getExtensionIds() const;
    PluginLoader m_loader;
    std::vector<QObject*> m_extensions;
    std::map<int, std::unique_ptr<CSettingsManager>> m_managers;
};
