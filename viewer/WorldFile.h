#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

class InputFiles;

/// Where a picture from above lies in the model, as a file beside it that programs for maps read.
namespace WorldFile {

/// The file that belongs to a picture: .pgw beside .png, .tfw beside .tif and .tiff.
QString pathFor(const QString& picture);
/// The names under which the world file of a picture may lie that somebody else made.
QStringList placesFor(const QString& picture);
/// The six lines: the size of a pixel along x, 0, 0, its size along y, which counts down, and the coordinates
/// of the middle of the upper left pixel. left, top: its upper left corner, model coordinates. Digits suffice
/// to read the same numbers back.
QByteArray content(double pixel, double left, double top);
/// Deletes the world file beside a picture that is none from above: it tells where the one lay that was there
/// before. Only a file as content() makes them, which is no input and belongs to no other picture. Throws
/// ksp::CommonError when it cannot be deleted.
void removeOld(const QString& picture, const InputFiles& inputs);

} // namespace WorldFile
