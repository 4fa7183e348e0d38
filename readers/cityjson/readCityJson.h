#pragma once

#include <readers/cityjson/CityJsonParser.h>

namespace readers {

/// Reads a CityJSON file, of at most 1 GiB, as CityJsonParser does. Throws ksp::CommonError, "path: reason".
CityJsonParser::Elements readCityJson(const QString& path, std::optional<double> lod,
                                      ksp::StagedProgress progress);

/// Whether the root of the JSON text in a file is one of CityJSON: has a member "CityObjects", or a type that
/// begins with "CityJSON". False for what is no JSON.
bool isCityJson(const QString& path);

} // namespace readers
