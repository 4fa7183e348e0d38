#include <viewer/cli/Commands.h>

#include <viewer/Host.h>
#include <viewer/printable.h>

#include <framework/app/PluginLoader.h>

QByteArray commands::plugins()
{
    const Host host(Host::Settings::InMemory);
    QString text;
    for (const PluginLoader::Plugin& plugin : host.application().getPlugins())
        text +=
            QStringLiteral("%1  %2: %3\n")
                .arg(plugin.instance ? QStringLiteral("loaded") : QStringLiteral("failed"),
                     printable(plugin.path), printable(plugin.instance ? plugin.className : plugin.error));
    return (text + QStringLiteral("opens: %1\n").arg(host.getExtensions().join(QStringLiteral(", "))))
        .toUtf8();
}
