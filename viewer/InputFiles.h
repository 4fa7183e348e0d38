#pragma once

#include <QtCore/QStringList>

/// The files that work reads, so that what it writes does not fall on one of them.
namespace InputFiles {

/// Whether the file is one of the inputs or one that an input names: the material libraries of an OBJ file
/// and their textures, the pictures and buffers of a glTF file. Links are followed. Looks into the inputs
/// only when the file exists.
bool contain(const QStringList& inputs, const QString& path);

} // namespace InputFiles
