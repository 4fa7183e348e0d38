#pragma once

#include <readers/colmap/ColmapImagesParser.h>

#include <QtCore/QString>

namespace readers {

/// Reads the stations of a COLMAP text model: images.txt, whose path is given, with the cameras.txt beside
/// it. Throws ksp::CommonError, "path: reason"; of the latter file "path: its cameras.txt: reason".
ColmapImagesParser::Stations readColmapStations(const QString& path, ksp::StagedProgress progress);

} // namespace readers
