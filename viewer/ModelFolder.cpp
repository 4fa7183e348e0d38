#include <viewer/ModelFolder.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace {

const QStringList& names()
{
    static const QStringList list = {QStringLiteral("cameras.txt"), QStringLiteral("images.txt"),
                                     QStringLiteral("points3D.txt")};
    return list;
}

/// Whether the file has more than comments.
bool hasContent(const QString& path)
{
    constexpr qint64 longestLine = 4096; // bytes; of a longer one what comes next is looked at as a line
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return true; // whoever reads it says what is wrong
    while (!file.atEnd()) {
        const QByteArray line = file.readLine(longestLine).trimmed();
        if (!line.isEmpty() && !line.startsWith('#')) return true;
    }
    return false;
}

} // namespace

QStringList ModelFolder::files(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isDir() && !names().contains(info.fileName())) return {};
    const QDir folder = info.isDir() ? QDir(path) : info.dir();
    QStringList found;
    for (const QString& name : names()) {
        if (!QFileInfo(folder.filePath(name)).isFile()) return {};
        found.append(folder.filePath(name));
    }
    return found;
}

QStringList ModelFolder::inputs(const QStringList& paths)
{
    QStringList inputs;
    for (const QString& path : paths) {
        const QStringList model = files(path);
        if (model.isEmpty()) inputs.append(path);
        if (model.isEmpty() || inputs.contains(model[1])) continue;
        inputs.append(model[1]);
        if (hasContent(model[2])) inputs.append(model[2]);
    }
    return inputs;
}
