#include <viewer/InputFiles.h>

#include <viewer/ModelFolder.h>
#include <viewer/WorldFile.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QUrl>

namespace {

constexpr qint64 longestLine = 4096;          // of those that name a file
constexpr qint64 mostJson = 64 * 1024 * 1024; // bytes of a glTF file that are looked through

/// What the lines of a text file say after one of the keywords.
QStringList readNames(const QString& path, const QRegularExpression& keyword)
{
    QStringList names;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return names;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine(longestLine)).trimmed();
        const QRegularExpressionMatch match = keyword.match(line);
        if (match.hasMatch()) names.append(line.mid(match.capturedLength()).trimmed());
    }
    return names;
}

QStringList readAddresses(const QString& path)
{
    QStringList names;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return names;
    static const QRegularExpression address(QStringLiteral("\"uri\"\\s*:\\s*\"([^\"]{1,4096})\""));
    auto matches = address.globalMatch(QString::fromUtf8(file.read(mostJson)));
    while (matches.hasNext())
        names.append(QUrl::fromPercentEncoding(matches.next().captured(1).toUtf8()));
    return names;
}

/// The places that a name in a file may stand for: as it is and by its last part, with and without what may
/// be options before it.
QStringList placesOf(QString name, const QDir& folder)
{
    name.replace(QLatin1Char('\\'), QLatin1Char('/'));
    QStringList places;
    for (const QString& text : {name, name.section(QRegularExpression(QStringLiteral("\\s+")), -1)})
        for (const QString& part : {text, text.section(QLatin1Char('/'), -1)})
            if (!part.isEmpty()) places.append(folder.filePath(part));
    return places;
}

/// The files that a file names, as far as they exist, canonical.
QStringList filesNamedIn(const QString& path)
{
    static const QRegularExpression library(QStringLiteral("^mtllib\\s+"));
    static const QRegularExpression map(QStringLiteral("^(map_\\w+|bump|disp|decal|refl|norm)\\s+"),
                                        QRegularExpression::CaseInsensitiveOption);
    const QString extension = QFileInfo(path).suffix().toLower();
    QStringList names;
    if (extension == QLatin1String("obj")) names = readNames(path, library);
    if (extension == QLatin1String("mtl")) names = readNames(path, map);
    if (extension == QLatin1String("gltf") || extension == QLatin1String("glb")) names = readAddresses(path);
    QStringList files;
    static const QStringList pictures = {QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                         QStringLiteral("tif"), QStringLiteral("tiff")};
    if (pictures.contains(extension))
        for (const QString& world : WorldFile::placesFor(path))
            if (QFileInfo(world).isFile()) files.append(QFileInfo(world).canonicalFilePath());
    for (const QString& name : names)
        for (const QString& place : placesOf(name, QFileInfo(path).absoluteDir()))
            if (QFileInfo(place).isFile()) files.append(QFileInfo(place).canonicalFilePath());
    files.removeDuplicates();
    return files;
}

} // namespace

InputFiles::InputFiles(const QStringList& inputs)
{
    for (const QString& input : inputs)
        for (const QString& file : ModelFolder::files(input) + QStringList(input))
            m_files.append(QFileInfo(file).canonicalFilePath());
    m_files.removeDuplicates();
}

bool InputFiles::contain(const QString& path) const
{
    const QString wanted = QFileInfo(path).canonicalFilePath();
    if (wanted.isEmpty()) return false;
    // what libraries name comes behind them in the list and is looked into in its turn
    while (m_searched < m_files.size()) {
        for (const QString& named : filesNamedIn(m_files[m_searched]))
            if (!m_files.contains(named)) m_files.append(named);
        ++m_searched;
    }
    return m_files.contains(wanted);
}
