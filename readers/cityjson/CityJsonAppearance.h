#pragma once

#include <readers/cityjson/CityGeometryBuilder.h>

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

namespace readers {

/// Reads the member "appearance" of a CityJSON file, all but its texture vertices, into the tables, whose
/// textures then have the names that the file gives. Throws ksp::CommonError.
void readAppearance(const QByteArray& text, CityJsonTables& tables, MemoryBudget& budget);

/// Turns the names of pictures into absolute paths. Those that do not lie beside the file at path become
/// empty, with a warning in the log each, of ten at most; of the rest one tells the number.
void findPictures(const QString& path, std::vector<CityJsonTexture>& textures);

} // namespace readers
