#include <readers/colmap/ColmapPointsParser.h>

#include <readers/common/MeshAssembler.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace readers {

ColmapPointsParser::ColmapPointsParser(QIODevice& device, const QString& path, ksp::StagedProgress progress)
    : m_name(QFileInfo(path).absoluteDir().dirName())
    , m_lines(device, std::move(progress))
{
}

std::vector<MeshData> ColmapPointsParser::parse()
{
    PolygonTriangulator triangulator;
    MeshAssembler mesh(triangulator, m_name);
    while (m_lines.next()) {
        m_lines.takeIdentifier("the point's identifier");
        glm::dvec3 position(0.0);
        for (int i = 0; i < 3; ++i)
            position[i] = m_lines.takeNumber("a coordinate");
        double color[3] = {};
        for (double& part : color)
            part = static_cast<double>(m_lines.takeInteger("the colour", 0, 255)) / 255.0;
        m_lines.takeNumber("the error");
        checkTrack();
        const std::uint32_t vertex = mesh.addVertex(position);
        mesh.setColor(vertex, packColor(color[0], color[1], color[2], 1.0));
    }
    if (mesh.getVertexCount() == 0) return {};
    mesh.addPointsOfAllVertices();
    std::vector<MeshData> meshes;
    meshes.push_back(mesh.take());
    return meshes;
}

void ColmapPointsParser::checkTrack()
{
    while (!m_lines.isAtEnd()) {
        m_lines.takeIdentifier("a picture that sees the point");
        m_lines.takeIdentifier("the place in that picture's points");
    }
}

} // namespace readers
