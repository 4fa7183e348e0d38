#pragma once

#include <framework/ksp/StagedProgress.h>
#include <framework/model/FeatureElement.h>

#include <memory>
#include <vector>

namespace readers {

/// Reads a GeoJSON file, of at most 512 MiB, as GeoJsonParser does. Throws ksp::CommonError, "path: reason".
std::vector<std::unique_ptr<FeatureElement>> readGeoJson(const QString& path, ksp::StagedProgress progress);

} // namespace readers
