#pragma once

#include <Viewer3dModule/drawables/MeshData.h>
#include <readers/colmap/ColmapLines.h>

namespace readers {

/// Reads points3D.txt.
class ColmapPointsParser
{
public:
    /// The mesh has the name of the folder that the file lies in.
    ColmapPointsParser(QIODevice& device, const QString& path, ksp::StagedProgress progress);
    /// One mesh of points with colours. Throws ksp::CommonError, "line 7: reason".
    std::vector<MeshData> parse();

private:
    void checkTrack();

    QString m_name;
    ColmapLines m_lines;
};

} // namespace readers
