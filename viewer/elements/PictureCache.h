#pragma once

#include <QtCore/QString>
#include <QtGui/QImage>

/// Pictures that several items show. What nobody uses any more is let go.
namespace PictureCache {

/// The picture in a file, read once while it is in use or among the last ones; with sides of at most 4096
/// pixels, larger ones scaled down. Null, with one warning in the log, when it cannot be read.
QImage load(const QString& path);

} // namespace PictureCache
