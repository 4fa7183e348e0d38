#include <Viewer3dModule/drawables/MeshNormals.h>

#include <framework/gmx/BoundingBox.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

bool isNormal(const glm::vec3& vector)
{
    const float square = glm::dot(vector, vector);
    return std::isfinite(square) && square > 0.0f;
}

// Lengths are brought to 1 and below, so that products of them do not leave the range of floats.
double sizeOf(const std::vector<glm::vec3>& positions)
{
    gmx::BoundingBox box;
    for (const glm::vec3& position : positions)
        box.unite(glm::dvec3(position));
    return box.getDiagonal();
}

// Twice the face's area as a vector; zero when it cannot be told.
glm::vec3 areaVector(const std::vector<glm::vec3>& positions, const std::uint32_t* corners, double size)
{
    const glm::dvec3 a(positions[corners[0]]);
    const glm::dvec3 b(positions[corners[1]]);
    const glm::dvec3 c(positions[corners[2]]);
    const glm::vec3 area(glm::cross((b - a) / size, (c - a) / size));
    return isNormal(area) ? area : glm::vec3(0.0f);
}

void addFaces(const MeshData& data, const MeshData::Part& part, double size, std::vector<glm::vec3>& sums)
{
    for (std::uint32_t i = 0; i + 2 < part.indexCount; i += 3) {
        const std::uint32_t* corners = data.indices.data() + part.firstIndex + i;
        const glm::vec3 area = areaVector(data.positions, corners, size);
        for (int corner = 0; corner < 3; ++corner)
            sums[corners[corner]] += area;
    }
}

std::vector<glm::vec3> normalsOfFaces(const MeshData& data)
{
    std::vector<glm::vec3> sums(data.positions.size(), glm::vec3(0.0f));
    const double size = sizeOf(data.positions);
    if (!(size > 0.0)) return sums;
    for (const MeshData::Part& part : data.parts)
        if (part.kind == MeshData::Part::Triangles) addFaces(data, part, size, sums);
    for (glm::vec3& sum : sums)
        sum = isNormal(sum) ? glm::normalize(sum) : glm::vec3(0.0f);
    return sums;
}

} // namespace

void completeNormals(MeshData& data)
{
    const bool hasTriangles =
        std::any_of(data.parts.begin(), data.parts.end(), [](const MeshData::Part& part) {
            return part.kind == MeshData::Part::Triangles && part.indexCount != 0;
        });
    const bool isComplete = data.normals.size() == data.positions.size() &&
                            std::all_of(data.normals.begin(), data.normals.end(), isNormal);
    if (!hasTriangles || isComplete) return;
    std::vector<glm::vec3> normals = normalsOfFaces(data);
    for (std::size_t i = 0; i < data.normals.size(); ++i)
        if (isNormal(data.normals[i])) normals[i] = data.normals[i];
    data.normals = std::move(normals);
}
