#include <viewer/cli/readJsonFile.h>

#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

QJsonDocument readJsonFile(const QString& path, const QString& what, qint64 mostBytes)
{
    const auto fail = [&path](const QString& reason) {
        throw ksp::CommonError(QStringLiteral("%1: %2").arg(shownName(path), reason));
    };
    QFile file(path);
    if (!QFileInfo::exists(path)) fail(QStringLiteral("there is no such file"));
    if (!QFileInfo(path).isFile()) fail(QStringLiteral("it is no regular file"));
    if (!file.open(QIODevice::ReadOnly)) fail(file.errorString());
    if (file.size() > mostBytes) fail(QStringLiteral("%1 has at most %2 MiB").arg(what).arg(mostBytes >> 20));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        fail(QStringLiteral("no JSON: %1 at byte %2").arg(error.errorString()).arg(error.offset));
    return document;
}
