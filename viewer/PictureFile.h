#pragma once

#include <viewer/PicturePainter.h>

#include <QtCore/QString>
#include <QtGui/QImage>

#include <functional>

class OutputFile;

/// Pictures as PNG or TIFF files, by their extensions, that appear whole or not at all. Errors are
/// ksp::CommonError, whose text begins with the file's name; a file that was there is then as it was.
namespace PictureFile {

/// Writes the picture, in place of a regular file or where nothing is.
void write(const QString& path, const QImage& image);

/// How a picture is drawn and written step by step.
struct Steps
{
    /// Draws a tile by the function that it is given.
    std::function<QImage(const std::function<QImage()>&)> draw;
    /// Called often; it throws to stop the work. done: how much of the picture is there, 0 to 1.
    std::function<void(double done)> report;
};
/// Draws a picture and writes it, in the memory of one band of its rows. The file is still to be committed.
void write(OutputFile& file, PicturePainter& painter, const Steps& steps);

} // namespace PictureFile
