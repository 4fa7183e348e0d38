#pragma once

#include <QtCore/QString>

/// The files that are being written under a name of their own, so that a program that ends at once leaves
/// none of them behind.
namespace UnfinishedFiles {

/// Notes a file. Of more than a handful at a time, and of names too long for a file system, none is noted.
void add(const QString& path);
/// The file is finished or gone.
void remove(const QString& path);
/// Deletes all that are noted. Does only what is safe in a signal's handler.
void deleteAll();

} // namespace UnfinishedFiles
