#include <readers/common/MeshAssembler.h>

#include <framework/ksp/CommonError.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace readers {

namespace {

constexpr double largestCoordinate = 1e15;
constexpr std::size_t mostCorners = 100'000; // of a polygon that is divided properly
constexpr std::size_t noRun = std::numeric_limits<std::size_t>::max();
constexpr float unusable = std::numeric_limits<float>::quiet_NaN();

bool isUsablePoint(const glm::dvec3& p)
{
    // written so that NaN fails
    return std::abs(p.x) <= largestCoordinate && std::abs(p.y) <= largestCoordinate &&
           std::abs(p.z) <= largestCoordinate;
}

// All coordinates to the digits that a float has of the largest: then whole and other short numbers in the
// neighbourhood come out of the subtraction unrounded, and nothing is lost, since the origin is not far.
glm::dvec3 roundedToFloat(const glm::dvec3& p)
{
    constexpr int digits = std::numeric_limits<float>::digits;
    const double largest = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)});
    if (largest < std::numeric_limits<float>::min()) return glm::dvec3(0.0);
    const double step = std::ldexp(1.0, std::ilogb(largest) + 1 - digits);
    return glm::round(p / step) * step;
}

double toUnit(double value)
{
    return value > 0.0 ? std::min(value, 1.0) : 0.0; // NaN becomes 0
}

template <typename Value>
void keepOnly(std::vector<Value>& values, const std::vector<bool>& used)
{
    if (values.empty()) return;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (used[i]) values[kept++] = values[i];
    }
    values.resize(kept);
    values.shrink_to_fit();
}

} // namespace

std::uint32_t packColor(double red, double green, double blue, double alpha)
{
    const auto byte = [](double value) {
        return static_cast<std::uint32_t>(std::lround(toUnit(value) * 255.0));
    };
    return byte(red) | byte(green) << 8 | byte(blue) << 16 | byte(alpha) << 24;
}

QColor toQColor(double red, double green, double blue, double alpha)
{
    return QColor::fromRgbF(toUnit(red), toUnit(green), toUnit(blue), toUnit(alpha));
}

MeshAssembler::MeshAssembler(PolygonTriangulator& triangulator, const QString& name)
    : m_triangulator(triangulator)
{
    m_data.name = name;
    std::fill(std::begin(m_current), std::end(m_current), noRun);
}

std::uint32_t MeshAssembler::addVertex(const glm::dvec3& position)
{
    if (m_data.positions.size() >= std::numeric_limits<std::uint32_t>::max())
        throw ksp::CommonError(QStringLiteral("has more vertices than one mesh can hold"));
    const bool usable = isUsablePoint(position);
    if (usable && !m_hasOrigin) {
        m_data.origin = roundedToFloat(position);
        m_hasOrigin = true;
    }
    m_data.positions.push_back(usable ? glm::vec3(position - m_data.origin) : glm::vec3(unusable));
    return static_cast<std::uint32_t>(m_data.positions.size() - 1);
}

void MeshAssembler::setNormal(std::uint32_t vertex, const glm::vec3& normal)
{
    const double length = glm::length(glm::dvec3(normal));
    if (!(length > 0.0) || std::isinf(length)) return;
    if (m_data.normals.size() <= vertex) m_data.normals.resize(m_data.positions.size(), glm::vec3(0.0f));
    m_data.normals[vertex] = glm::vec3(glm::dvec3(normal) / length);
}

void MeshAssembler::setTexCoord(std::uint32_t vertex, const glm::vec2& texCoord)
{
    if (!std::isfinite(texCoord.x) || !std::isfinite(texCoord.y)) return;
    if (m_data.texCoords.size() <= vertex) m_data.texCoords.resize(m_data.positions.size(), glm::vec2(0.0f));
    m_data.texCoords[vertex] = texCoord;
}

void MeshAssembler::setColor(std::uint32_t vertex, std::uint32_t rgba)
{
    if (m_data.colors.size() <= vertex) m_data.colors.resize(m_data.positions.size(), 0xffffffffu);
    m_data.colors[vertex] = rgba;
}

void MeshAssembler::useMaterial(const Material* material)
{
    if (material == m_material) return;
    m_material = material;
    std::fill(std::begin(m_current), std::end(m_current), noRun);
}

std::vector<std::uint32_t>& MeshAssembler::getIndices(MeshData::Part::Kind kind)
{
    if (m_current[kind] == noRun) {
        const auto [place, isNew] = m_runNumbers.try_emplace({kind, m_material}, m_runs.size());
        if (isNew) m_runs.push_back({kind, m_material, {}});
        m_current[kind] = place->second;
    }
    return m_runs[m_current[kind]].indices;
}

bool MeshAssembler::isUsable(std::uint32_t vertex) const
{
    return !std::isnan(m_data.positions[vertex].x);
}

void MeshAssembler::addPoint(std::uint32_t a)
{
    if (isUsable(a))
        getIndices(MeshData::Part::Points).push_back(a);
    else
        ++m_leftOutCount;
}

void MeshAssembler::addLine(std::uint32_t a, std::uint32_t b)
{
    if (!isUsable(a) || !isUsable(b)) {
        ++m_leftOutCount;
        return;
    }
    std::vector<std::uint32_t>& indices = getIndices(MeshData::Part::Lines);
    indices.push_back(a);
    indices.push_back(b);
}

void MeshAssembler::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c)
{
    if (!isUsable(a) || !isUsable(b) || !isUsable(c)) {
        ++m_leftOutCount;
        return;
    }
    std::vector<std::uint32_t>& indices = getIndices(MeshData::Part::Triangles);
    indices.push_back(a);
    indices.push_back(b);
    indices.push_back(c);
}

void MeshAssembler::addPolygon(const std::vector<std::uint32_t>& corners)
{
    if (corners.size() == 3) {
        addTriangle(corners[0], corners[1], corners[2]);
        return;
    }
    if (!std::all_of(corners.begin(), corners.end(), [this](std::uint32_t c) { return isUsable(c); })) {
        ++m_leftOutCount;
        return;
    }
    std::vector<std::uint32_t>& indices = getIndices(MeshData::Part::Triangles);
    if (corners.size() > mostCorners) {
        m_triangulator.countFan();
        for (std::size_t i = 1; i + 1 < corners.size(); ++i)
            indices.insert(indices.end(), {corners[0], corners[i], corners[i + 1]});
        return;
    }
    m_polygon.clear();
    for (std::uint32_t corner : corners)
        m_polygon.emplace_back(m_data.positions[corner]);
    m_triangles.clear();
    m_triangulator.triangulate(m_polygon, m_triangles);
    for (std::uint32_t corner : m_triangles)
        indices.push_back(corners[corner]);
}

void MeshAssembler::addPointsOfAllVertices()
{
    for (std::uint32_t i = 0; i < m_data.positions.size(); ++i)
        addPoint(i);
}

bool MeshAssembler::isEmpty() const
{
    return m_runs.empty();
}

MeshData MeshAssembler::take()
{
    joinRuns();
    if (!m_data.normals.empty()) m_data.normals.resize(m_data.positions.size(), glm::vec3(0.0f));
    if (!m_data.texCoords.empty()) m_data.texCoords.resize(m_data.positions.size(), glm::vec2(0.0f));
    if (!m_data.colors.empty()) m_data.colors.resize(m_data.positions.size(), 0xffffffffu);
    dropUnusedVertices();
    return std::move(m_data);
}

void MeshAssembler::joinRuns()
{
    std::size_t total = 0;
    for (const Run& run : m_runs)
        total += run.indices.size();
    if (total > std::numeric_limits<std::uint32_t>::max())
        throw ksp::CommonError(QStringLiteral("has more corners than one mesh can hold"));
    std::map<const Material*, int> images;
    if (m_runs.size() > 1) m_data.indices.reserve(total);
    for (Run& run : m_runs) {
        MeshData::Part part;
        part.kind = run.kind;
        part.firstIndex = static_cast<std::uint32_t>(m_data.indices.size());
        part.indexCount = static_cast<std::uint32_t>(run.indices.size());
        if (run.material) part.color = run.material->color;
        if (run.material && !run.material->image.isNull()) {
            const auto [place, isNew] = images.emplace(run.material, static_cast<int>(m_data.images.size()));
            if (isNew) m_data.images.push_back(run.material->image);
            part.image = place->second;
        }
        m_data.parts.push_back(part);
        if (m_runs.size() == 1) {
            m_data.indices = std::move(run.indices);
        } else {
            m_data.indices.insert(m_data.indices.end(), run.indices.begin(), run.indices.end());
            std::vector<std::uint32_t>().swap(run.indices);
        }
    }
    m_runs.clear();
}

void MeshAssembler::dropUnusedVertices()
{
    std::vector<bool> used(m_data.positions.size(), false);
    for (std::uint32_t index : m_data.indices)
        used[index] = true;
    if (std::find(used.begin(), used.end(), false) == used.end()) return;
    std::vector<std::uint32_t> newIndices(used.size(), 0);
    std::uint32_t kept = 0;
    for (std::size_t i = 0; i < used.size(); ++i) {
        if (used[i]) newIndices[i] = kept++;
    }
    for (std::uint32_t& index : m_data.indices)
        index = newIndices[index];
    keepOnly(m_data.positions, used);
    keepOnly(m_data.normals, used);
    keepOnly(m_data.texCoords, used);
    keepOnly(m_data.colors, used);
}

} // namespace readers
