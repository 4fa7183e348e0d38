#pragma once

#include <readers/colmap/ColmapCamerasParser.h>

#include <memory>
#include <unordered_set>
#include <vector>

namespace readers {

/// Reads images.txt: two lines a picture, the second one with the points seen in it, which may be empty.
class ColmapImagesParser
{
public:
    using Stations = std::vector<std::unique_ptr<StationElement>>;

    /// The cameras outlive the parser.
    ColmapImagesParser(QIODevice& device, const ColmapCamerasParser::Cameras& cameras,
                       ksp::StagedProgress progress);
    /// One a picture, in the order of the file. Throws ksp::CommonError, "line 7: reason".
    Stations parse();

private:
    std::unique_ptr<StationElement> takeStation();
    StationElement::Pose takePose();
    void checkPoints();

    const ColmapCamerasParser::Cameras& m_cameras;
    MemoryBudget m_budget;
    ColmapLines m_lines;
    std::unordered_set<std::int64_t> m_ids;
};

} // namespace readers
