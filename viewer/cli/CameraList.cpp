#include <viewer/cli/CameraList.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/JsonFields.h>
#include <viewer/cli/UsageError.h>
#include <viewer/cli/readJsonFile.h>
#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

constexpr qint64 mostBytes = 64 << 20;
const QStringList keys = {"name", "output",     "view", "eye", "target",
                          "up",   "projection", "fov",  "gsd", "size"};

QJsonArray readArray(const QString& path)
{
    const QJsonDocument document = readJsonFile(path, QStringLiteral("a list of cameras"), mostBytes);
    if (!document.isArray() || document.array().isEmpty())
        throw ksp::CommonError(
            QStringLiteral("%1: a list of cameras is wanted, [{...}, ...]").arg(shownName(path)));
    return document.array();
}

/// A name that is part of a file's name and nothing more.
QString readName(const JsonFields& fields)
{
    const QString name = fields.text("name");
    if (name.contains(QLatin1Char('/')) || name.contains(QChar(0)))
        fields.refuse(QStringLiteral("%1: it becomes part of a file's name and can have no /")
                          .arg(fields.shown("name")));
    return name;
}

QString outputOf(const JsonFields& fields, const QString& name, const QDir& folder, const QString& pattern,
                 const QStringList& extensions)
{
    if (fields.has("output")) {
        const QString output = fields.text("output");
        if (!extensions.contains(QFileInfo(output).suffix().toLower()))
            fields.refuse(QStringLiteral("%1: the name must end in .%2")
                              .arg(fields.shown("output"), extensions.join(QStringLiteral(" or ."))));
        return folder.filePath(output);
    }
    if (pattern.isEmpty())
        fields.refuse(QStringLiteral("no %1; add one, or -o with a pattern such as %2.%3")
                          .arg(fields.shown("output"), CameraList::namePlace, extensions.first()));
    if (name.isEmpty())
        fields.refuse(QStringLiteral("neither %1 nor %2").arg(fields.shown("name"), fields.shown("output")));
    return QString(pattern).replace(CameraList::namePlace, name);
}

/// What tells files apart: the folder as it really is, and the name. Also of files that are not there yet.
QString identityOf(const QString& path)
{
    const QFileInfo file(path);
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    return (folder.isEmpty() ? file.absolutePath() : folder) + QLatin1Char('/') + file.fileName();
}

} // namespace

const QString CameraList::namePlace = QStringLiteral("{name}");

std::vector<CameraList::Entry> CameraList::read(const QString& path, const QString& pattern,
                                                const QStringList& extensions)
{
    const QJsonArray array = readArray(path);
    const QDir folder = QFileInfo(path).dir();
    std::vector<Entry> entries;
    QHash<QString, int> numbers; // of the cameras by their outputs
    for (int i = 0; i < array.size(); ++i) {
        const QString place =
            QStringLiteral("%1: camera %2 of %3").arg(shownName(path)).arg(i + 1).arg(array.size());
        const JsonFields fields(array[i].toObject(), place);
        if (!array[i].isObject()) fields.refuse(QStringLiteral("an object is wanted, {...}"));
        fields.requireKnown(keys);
        const QString name = fields.has("name") ? readName(fields) : QString();
        const QString output = outputOf(fields, name, folder, pattern, extensions);
        const QString identity = identityOf(output);
        if (numbers.contains(identity))
            fields.refuse(QStringLiteral("its output %1 is that of camera %2, too")
                              .arg(shownName(output))
                              .arg(numbers[identity] + 1));
        numbers[identity] = i;
        entries.push_back({CameraOptions::read(fields), output, place, name});
    }
    return entries;
}

QString CameraList::named(const QString& pattern, const Entry& entry)
{
    if (entry.name.isEmpty())
        throw ksp::CommonError(
            QStringLiteral("%1: no \"name\", which %2 wants").arg(entry.shown, shownName(pattern)));
    return QString(pattern).replace(namePlace, entry.name);
}

QString CameraList::readOption(const CommandParser& parser)
{
    if (!parser.isSet("cameras")) return {};
    for (const char* option : {"size", "view", "projection", "eye", "target", "up", "fov", "gsd"})
        if (parser.isSet(option))
            throw UsageError(
                QStringLiteral("--cameras and --%1 exclude each other; the list says it for each camera")
                    .arg(option));
    const QString list = parser.value("cameras");
    if (list.isEmpty()) throw UsageError(QStringLiteral("--cameras wants the name of a file"));
    return list;
}
