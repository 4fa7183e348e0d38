#pragma once

#include <QtGui/QImage>

/// Pictures as PNG files that appear whole or not at all. Errors are ksp::CommonError, whose text begins with
/// the file's name; a file that was there is then as it was.
namespace PictureFile {

/// Throws when a file of this name cannot be written, so that nobody waits for a picture in vain.
void requireWritable(const QString& path);
void write(const QString& path, const QImage& image);

} // namespace PictureFile
