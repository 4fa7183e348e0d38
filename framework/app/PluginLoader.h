#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>
#include <vector>

/// Finds and loads plug-ins. A plug-in that cannot be loaded is listed with the reason and stops nothing.
class HOSTFRAMEWORK_EXPORT PluginLoader
{
public:
    /// What became of one file.
    struct Plugin
    {
        QString path;         ///< the file
        QString iid;          ///< the interface identifier of its metadata
        QString className;    ///< the class name of its metadata
        QJsonObject metaData; ///< the plug-in's own metadata object, as its author wrote it; may be empty
        QObject* instance = nullptr; ///< null when it could not be loaded
        QString error;               ///< why, in one line; empty when it was loaded
    };

    PluginLoader();
    ~PluginLoader();

    /// The folders, in the order in which they are searched, each once: those of the environment variable
    /// VIEWER3D_PLUGIN_PATH, then viewer3d/plugins below the folder that this library lies in (build tree and
    /// installation alike), then next to the program (../lib/viewer3d/plugins and plugins), then the folder
    /// that the library was built to be installed with, where one was given.
    static QStringList defaultFolders();

    /// Reads the metadata of every library in the folders, folder by folder, by file name, and loads those
    /// whose metadata is a plug-in's. Pipes, devices and broken links are listed and not opened. A file of a
    /// class name that was loaded already is listed as a duplicate; a file that is listed already (also by
    /// another path to it) is left out, and so are folders that are not there. Libraries stay loaded to the
    /// end of the process. Each failure gives a warning in the log, a duplicate a line of information.
    void load(const QStringList& folders);

    const std::vector<Plugin>& getPlugins() const { return m_plugins; }
    /// Lists a plug-in that was loaded but cannot serve as failed.
    void refuse(std::size_t index, const QString& reason);

private:
    void loadFile(const QString& path);
    /// The file that a plug-in class was loaded from, or an empty text.
    QString findLoaded(const QString& className) const;
    std::vector<Plugin> m_plugins;
};
