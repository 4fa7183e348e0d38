#pragma once

#include <QtCore/QStringList>
#include <QtGui/QImage>

/// Pictures as PNG files that appear whole or not at all. Errors are ksp::CommonError, whose text begins with
/// the file's name; a file that was there is then as it was.
namespace PictureFile {

/// Throws when a file of this name cannot be written, so that nobody waits for a picture in vain: tries it,
/// and leaves nothing behind.
void requireWritable(const QString& path);
/// Throws when the file is one of the inputs or one that they name, such as a texture.
void requireNoInput(const QString& path, const QStringList& inputs);
/// Writes the picture, in place of a regular file or where nothing is.
void write(const QString& path, const QImage& image);

} // namespace PictureFile
