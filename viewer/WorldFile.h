#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// Where a picture from above lies in the model, as a file beside it that programs for maps read.
namespace WorldFile {

/// The file that belongs to a picture: .pgw beside .png, .tfw beside .tif and .tiff.
QString pathFor(const QString& picture);
/// The six lines: the size of a pixel along x, 0, 0, its size along y, which counts down, and the coordinates
/// of the middle of the upper left pixel. left, top: its upper left corner, model coordinates. Digits suffice
/// to read the same numbers back.
QByteArray content(double pixel, double left, double top);

} // namespace WorldFile
