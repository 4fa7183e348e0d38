#include <framework/app/PluginLoader.h>

#include <framework/ksp/Log.h>
#include <framework/ksp/isOtherThanFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>
#include <QtCore/QPluginLoader>

#include <dlfcn.h>

namespace {

const QString pluginFolder = QStringLiteral("viewer3d/plugins");

/// The folder of the library that this code is in; empty when the system does not tell.
QString libraryFolder()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(&libraryFolder), &info) == 0 || !info.dli_fname) return {};
    return QFileInfo(QFile::decodeName(info.dli_fname)).canonicalPath();
}

bool isSharedLibrary(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(4) == QByteArray("\x7f"
                                                                        "ELF");
}

/// Fills in what the metadata of a library says; returns why it is no plug-in's, or an empty text.
QString readMetaData(const QJsonObject& metaData, PluginLoader::Plugin& plugin)
{
    if (!isSharedLibrary(plugin.path)) return QStringLiteral("not a shared library");
    if (metaData.isEmpty()) return QStringLiteral("no plug-in metadata");
    plugin.iid = metaData.value(QStringLiteral("IID")).toString();
    plugin.className = metaData.value(QStringLiteral("className")).toString();
    plugin.metaData = metaData.value(QStringLiteral("MetaData")).toObject();
    if (plugin.iid.isEmpty()) return QStringLiteral("no interface identifier in the plug-in metadata");
    return {};
}

/// Loads the library and makes its plug-in object; returns why that failed, or an empty text.
QString makeInstance(QPluginLoader& loader, QObject*& instance)
{
    // all symbols at once: one that is missing must fail here and not end the program in mid-work
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    try {
        instance = loader.instance();
    } catch (const std::exception& error) {
        return QStringLiteral("the plug-in object cannot be made: %1").arg(QString::fromUtf8(error.what()));
    } catch (...) {
        return QStringLiteral("the plug-in object cannot be made: unknown exception");
    }
    if (instance) return {};
    const QString reason = loader.errorString().simplified();
    return reason.isEmpty() ? QStringLiteral("the plug-in gives no object") : reason;
}

} // namespace

PluginLoader::PluginLoader() = default;
PluginLoader::~PluginLoader() = default;

QStringList PluginLoader::defaultFolders()
{
    QStringList folders =
        QFile::decodeName(qgetenv("VIEWER3D_PLUGIN_PATH")).split(QDir::listSeparator(), Qt::SkipEmptyParts);
    const QString library = libraryFolder();
    if (!library.isEmpty()) folders << library + QLatin1Char('/') + pluginFolder;
    if (QCoreApplication::instance()) {
        const QString program = QCoreApplication::applicationDirPath();
        folders << program + QStringLiteral("/../lib/") + pluginFolder
                << program + QStringLiteral("/plugins");
    }
#ifdef V3D_INSTALL_PLUGIN_DIR
    folders << QStringLiteral(V3D_INSTALL_PLUGIN_DIR);
#endif
    for (QString& folder : folders)
        folder = QDir::cleanPath(folder);
    folders.removeDuplicates();
    return folders;
}

void PluginLoader::load(const QStringList& folders)
{
    for (const QString& folder : folders)
        for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files | QDir::System, QDir::Name))
            if (QLibrary::isLibrary(file.fileName())) loadFile(file.absoluteFilePath());
}

void PluginLoader::loadFile(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    for (const Plugin& known : m_plugins)
        if (known.path == path ||
            (!canonical.isEmpty() && QFileInfo(known.path).canonicalFilePath() == canonical))
            return;
    Plugin plugin;
    plugin.path = path;
    QPluginLoader loader;
    if (ksp::isOtherThanFile(path)) {
        plugin.error = ksp::otherThanFileReason(); // to open a pipe would be to wait for its writer
    } else {
        loader.setFileName(path);
        plugin.error = readMetaData(loader.metaData(), plugin);
    }
    const QString first = plugin.error.isEmpty() ? findLoaded(plugin.className) : QString();
    if (!first.isEmpty()) {
        // usual where an installed copy lies next to one that was just built: nothing to warn of
        plugin.error = QStringLiteral("duplicate: %1 was loaded from %2").arg(plugin.className, first);
        ksp::Log::info(QStringLiteral("%1: plug-in not loaded: %2").arg(path, plugin.error));
    } else {
        if (plugin.error.isEmpty()) plugin.error = makeInstance(loader, plugin.instance);
        if (!plugin.error.isEmpty())
            ksp::Log::warning(QStringLiteral("%1: plug-in not loaded: %2").arg(path, plugin.error));
    }
    m_plugins.push_back(plugin);
}

QString PluginLoader::findLoaded(const QString& className) const
{
    for (const Plugin& plugin : m_plugins)
        if (plugin.instance && plugin.className == className) return plugin.path;
    return {};
}

void PluginLoader::refuse(std::size_t index, const QString& reason)
{
    m_plugins[index].instance = nullptr;
    m_plugins[index].error = reason;
}
