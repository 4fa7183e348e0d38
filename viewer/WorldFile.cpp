#include <viewer/WorldFile.h>

#include <viewer/InputFiles.h>
#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>

#include <algorithm>

namespace {

QByteArray shortest(double number)
{
    return QByteArray::number(number, 'f', QLocale::FloatingPointShortest);
}

/// Whether a file is one that this program may have written.
bool isOurs(const QString& path)
{
    constexpr qint64 longest = 4096; // bytes; ours are far shorter
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) return false;
    QList<QByteArray> lines = file.read(longest).split('\n');
    if (lines.size() != 7 || !lines.takeLast().isEmpty()) return false;
    const bool areOurNumbers = std::all_of(
        lines.begin(), lines.end(), [](const QByteArray& line) { return line == shortest(line.toDouble()); });
    return areOurNumbers && lines[1] == "0" && lines[2] == "0" && lines[3] == '-' + lines[0];
}

/// Whether another picture lies there that has the world file, too, as .tif and .tiff do.
bool belongsToAnother(const QString& world, const QString& picture)
{
    const QFileInfo file(picture);
    const QDir folder = file.absoluteDir();
    const QStringList names = folder.entryList(QDir::Files);
    return std::any_of(names.begin(), names.end(), [&](const QString& name) {
        return name != file.fileName() && name.startsWith(file.completeBaseName() + QLatin1Char('.')) &&
               WorldFile::pathFor(folder.filePath(name)) == folder.filePath(QFileInfo(world).fileName());
    });
}

} // namespace

QString WorldFile::pathFor(const QString& picture)
{
    // the first letter of the extension, the last one, and w
    const QString extension = QFileInfo(picture).suffix();
    const QString shown = extension.toLower() == QLatin1String("tiff") ? extension.left(3) : extension;
    return picture.left(picture.size() - extension.size()) + shown.left(1) + shown.right(1) +
           (shown.right(1).isUpper() ? QLatin1Char('W') : QLatin1Char('w'));
}

QByteArray WorldFile::content(double pixel, double left, double top)
{
    QByteArray lines;
    for (const double number : {pixel, 0.0, 0.0, -pixel, left + pixel / 2.0, top - pixel / 2.0})
        lines += shortest(number) + '\n';
    return lines;
}

QStringList WorldFile::placesFor(const QString& picture)
{
    const QString usual = pathFor(picture);
    const QString suffix = QFileInfo(usual).suffix();
    const QString stem = usual.left(usual.size() - suffix.size());
    QStringList places = {usual, stem + suffix.toLower(), stem + suffix.toUpper(),
                          picture + QLatin1Char('w')};
    places.removeDuplicates();
    return places;
}

void WorldFile::removeOld(const QString& picture, const InputFiles& inputs)
{
    const QString world = pathFor(picture);
    if (!isOurs(world) || inputs.contain(world) || belongsToAnother(world, picture)) return;
    QFile file(world);
    if (!file.remove())
        throw ksp::CommonError(
            QStringLiteral("%1: cannot be deleted, though it tells of an older picture: %2")
                .arg(shownName(world), file.errorString()));
}
