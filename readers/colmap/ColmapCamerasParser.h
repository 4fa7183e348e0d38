#pragma once

#include <framework/model/StationElement.h>
#include <readers/colmap/ColmapLines.h>
#include <readers/common/MemoryBudget.h>

#include <map>

namespace readers {

/// Reads cameras.txt.
class ColmapCamerasParser
{
public:
    using Cameras = std::map<std::int64_t, StationElement::Camera>;

    ColmapCamerasParser(QIODevice& device, ksp::StagedProgress progress);
    /// The cameras by their identifiers. Throws ksp::CommonError, "line 7: reason".
    Cameras parse();

private:
    StationElement::Camera takeCamera();

    MemoryBudget m_budget;
    ColmapLines m_lines;
};

} // namespace readers
