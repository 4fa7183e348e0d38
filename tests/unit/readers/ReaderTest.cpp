#include "ReaderTest.h"

#include <framework/ksp/CommonError.h>
#include <readers/geojson/GeoJsonParser.h>
#include <readers/gltf/GltfParser.h>
#include <readers/obj/ObjParser.h>
#include <readers/off/OffParser.h>
#include <readers/ply/PlyParser.h>
#include <readers/stl/StlParser.h>

#include <QtCore/QFile>

#include <cmath>

namespace {

template <typename Parser>
std::vector<MeshData> parseWith(QIODevice& device, const QString& path, ksp::StagedProgress progress)
{
    return Parser(device, path, std::move(progress)).parse();
}

std::vector<MeshData> parseFeatures(QIODevice& device, const QString&, ksp::StagedProgress progress)
{
    return std::vector<MeshData>(readers::GeoJsonParser(std::move(progress)).parse(device.readAll()).size());
}

} // namespace

readers::MeshParser parserOf(const QString& extension)
{
    if (extension == "obj") return &parseWith<readers::ObjParser>;
    if (extension == "ply") return &parseWith<readers::PlyParser>;
    if (extension == "stl") return &parseWith<readers::StlParser>;
    if (extension == "off") return &parseWith<readers::OffParser>;
    if (extension == "geojson") return &parseFeatures;
    return &parseWith<readers::GltfParser>;
}

QString ReaderTest::write(const QString& name, const QByteArray& bytes) const
{
    const QString path = folder.filePath(name);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
    return path;
}

std::vector<MeshData> ReaderTest::read(const QString& extension, const QByteArray& bytes) const
{
    const QString path = write("file." + extension, bytes);
    std::vector<MeshData> meshes =
        readers::readMeshFile(path, parserOf(extension), ksp::StagedProgress::dummy());
    for (const MeshData& mesh : meshes)
        checkSound(mesh);
    return meshes;
}

QString ReaderTest::refusal(const QString& extension, const QByteArray& bytes) const
{
    try {
        read(extension, bytes);
    } catch (const ksp::CommonError& error) {
        const QString prefix = folder.filePath("file." + extension) + ": ";
        EXPECT_TRUE(error.text().startsWith(prefix)) << error.what();
        EXPECT_FALSE(error.text().contains('\n'));
        EXPECT_GT(error.text().size(), prefix.size());
        return error.text().mid(prefix.size());
    }
    ADD_FAILURE() << "was read";
    return {};
}

void checkSound(const MeshData& mesh)
{
    const std::size_t count = mesh.positions.size();
    EXPECT_TRUE(mesh.normals.empty() || mesh.normals.size() == count);
    EXPECT_TRUE(mesh.colors.empty() || mesh.colors.size() == count);
    EXPECT_TRUE(mesh.texCoords.empty() || mesh.texCoords.size() == count);
    bool finite = true;
    for (const glm::vec3& p : mesh.positions)
        finite = finite && std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
    for (const glm::vec3& n : mesh.normals)
        finite = finite && std::isfinite(n.x) && std::isfinite(n.y) && std::isfinite(n.z);
    for (const glm::vec2& t : mesh.texCoords)
        finite = finite && std::isfinite(t.x) && std::isfinite(t.y);
    EXPECT_TRUE(finite);
    for (std::uint32_t index : mesh.indices)
        ASSERT_LT(index, count);
    std::uint64_t next = 0;
    for (const MeshData::Part& part : mesh.parts) {
        EXPECT_EQ(part.firstIndex, next);
        next += part.indexCount;
        EXPECT_EQ(part.indexCount % (part.kind == MeshData::Part::Points  ? 1
                                     : part.kind == MeshData::Part::Lines ? 2
                                                                          : 3),
                  0u);
        EXPECT_LT(part.image, static_cast<int>(mesh.images.size()));
    }
    EXPECT_EQ(next, mesh.indices.size());
}

std::vector<glm::dvec3> cornersOf(const MeshData& mesh, std::size_t part)
{
    std::vector<glm::dvec3> corners;
    for (std::uint32_t i = 0; i < mesh.parts.at(part).indexCount; ++i)
        corners.push_back(mesh.origin +
                          glm::dvec3(mesh.positions.at(mesh.indices.at(mesh.parts[part].firstIndex + i))));
    return corners;
}

std::size_t countOf(const MeshData& mesh, MeshData::Part::Kind kind)
{
    std::size_t count = 0;
    for (const MeshData::Part& part : mesh.parts) {
        if (part.kind == kind) count += part.indexCount / (static_cast<std::size_t>(kind) + 1);
    }
    return count;
}

glm::dvec3 areaOf(const MeshData& mesh, std::size_t part)
{
    const std::vector<glm::dvec3> corners = cornersOf(mesh, part);
    glm::dvec3 sum(0.0);
    for (std::size_t i = 0; i + 2 < corners.size(); i += 3)
        sum += 0.5 * glm::cross(corners[i + 1] - corners[i], corners[i + 2] - corners[i]);
    return sum;
}
