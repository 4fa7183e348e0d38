#include <Viewer3dModule/drawables/MeshNormals.h>

#include <framework/gmx/BoundingBox.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Faces share a normal when the cosine of their angle is no less: 45.6 degrees, so that eight-sided pillars
// are round.
constexpr double creaseCosine = 0.7;
// A vertex gets no more normals than this; further faces share the last one. Keeps the work per face
// constant.
constexpr int maxNormalsPerVertex = 16;

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

bool shareNormal(const glm::vec3& sum, const glm::vec3& area)
{
    if (!isNormal(sum)) return true;
    const glm::dvec3 a(sum);
    const glm::dvec3 b(area);
    return glm::dot(a, b) >= creaseCosine * glm::length(a) * glm::length(b);
}

// Sums up the areas of each vertex's faces. Where a face does not fit in with those before it, the vertex is
// followed by a copy, and the face's corner moves there; vertices in one place are chained.
class NormalSums
{
public:
    explicit NormalSums(MeshData& data)
        : m_data(data)
        , m_vertexCount(data.positions.size())
        , m_sums(m_vertexCount, glm::vec3(0.0f))
        , m_next(m_vertexCount, 0)
    {
    }
    void addFaces(const MeshData::Part& part, double size)
    {
        for (std::uint32_t i = 0; i + 2 < part.indexCount; i += 3) {
            std::uint32_t* corners = m_data.indices.data() + part.firstIndex + i;
            // A part that shares its indices with an earlier one has some at copies already.
            const std::uint32_t places[] = {placeOf(corners[0]), placeOf(corners[1]), placeOf(corners[2])};
            const glm::vec3 area = areaVector(m_data.positions, places, size);
            if (area == glm::vec3(0.0f)) continue;
            for (int corner = 0; corner < 3; ++corner)
                if (!hasNormal(places[corner])) corners[corner] = add(area, corners[corner]);
        }
    }
    // Completes the normals and appends the copies to all arrays.
    void finish()
    {
        m_data.normals.resize(m_vertexCount, glm::vec3(0.0f));
        repeat(m_data.normals);
        repeat(m_data.positions);
        repeat(m_data.colors);
        repeat(m_data.texCoords);
        for (std::size_t i = 0; i < m_sums.size(); ++i)
            if (!isNormal(m_data.normals[i]))
                m_data.normals[i] = isNormal(m_sums[i]) ? glm::normalize(m_sums[i]) : glm::vec3(0.0f);
    }

private:
    std::uint32_t placeOf(std::uint32_t vertex) const
    {
        return vertex < m_vertexCount ? vertex : m_places[vertex - m_vertexCount];
    }
    bool hasNormal(std::uint32_t vertex) const
    {
        return vertex < m_data.normals.size() && isNormal(m_data.normals[vertex]);
    }
    // The vertex in this place, or a new one, whose normal the face takes part in.
    std::uint32_t add(const glm::vec3& area, std::uint32_t vertex)
    {
        for (int count = 1; !shareNormal(m_sums[vertex], area) && count < maxNormalsPerVertex; ++count) {
            if (m_next[vertex] == 0) appendAfter(vertex);
            vertex = m_next[vertex];
        }
        m_sums[vertex] += area;
        return vertex;
    }
    void appendAfter(std::uint32_t vertex)
    {
        m_next[vertex] = static_cast<std::uint32_t>(m_sums.size());
        m_places.push_back(placeOf(vertex));
        m_sums.emplace_back(0.0f);
        m_next.push_back(0);
    }
    template <class T>
    void repeat(std::vector<T>& values) const
    {
        if (values.size() != m_vertexCount) return;
        values.reserve(m_vertexCount + m_places.size());
        for (const std::uint32_t place : m_places)
            values.push_back(values[place]);
    }

    MeshData& m_data;
    std::size_t m_vertexCount;           // without copies
    std::vector<glm::vec3> m_sums;       // a vertex, then a copy
    std::vector<std::uint32_t> m_next;   // the next copy in the same place, 0: none
    std::vector<std::uint32_t> m_places; // a copy: the vertex that it repeats
};

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
    NormalSums sums(data);
    const double size = sizeOf(data.positions);
    for (const MeshData::Part& part : data.parts)
        if (part.kind == MeshData::Part::Triangles && size > 0.0) sums.addFaces(part, size);
    sums.finish();
}
