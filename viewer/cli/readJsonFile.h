#pragma once

#include <QtCore/QJsonDocument>
#include <QtCore/QString>

/// The content of a JSON file. what: what it holds, for messages ("a list of cameras"). Throws
/// ksp::CommonError, whose text begins with the file's name, when it cannot be read, has more bytes than that
/// or is no JSON.
QJsonDocument readJsonFile(const QString& path, const QString& what, qint64 mostBytes);
