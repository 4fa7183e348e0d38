#pragma once

#include <QtCore/QString>

namespace ksp {

/// Whether the path leads, links followed, to something that is no regular file: a folder, a pipe, a device.
/// Opening one may block, and reading one may never end. False where nothing is. Internal to the framework.
bool isOtherThanFile(const QString& path);

/// The reason to give for such a thing.
inline QString otherThanFileReason()
{
    return QStringLiteral("not a regular file");
}

} // namespace ksp
