#include <viewer/elements/FeatureAreas.h>

#include <viewer/elements/FeatureStyle.h>
#include <viewer/elements/SurfaceMesh.h>
#include <viewer/printable.h>

#include <framework/ksp/Log.h>

#include <algorithm>
#include <cmath>

namespace {

using Part = FeatureElement::Part;
using Parts = std::vector<Part>;

constexpr double levelHeight = 3.0; // model units, which are metres where there are levels
constexpr double highest = 1e6;

double readHeight(const FeatureElement& feature, const char* name)
{
    bool isNumber = false;
    const QVariant value = feature.getProperty(QLatin1String(name));
    const double height =
        value.userType() == QMetaType::Bool ? 0.0 : value.toString().trimmed().toDouble(&isNumber);
    return isNumber && height > 0.0 && height <= highest ? height : 0.0;
}

/// Calls visit(first, last) for each polygon: a ring that is no hole and the holes behind it.
template <typename Visit>
void forEachPolygon(const Parts& parts, Visit visit)
{
    for (std::size_t first = 0; first < parts.size(); ++first) {
        if (parts[first].kind != Part::Ring) continue;
        std::size_t last = first + 1;
        while (last < parts.size() && parts[last].kind == Part::Ring && parts[last].hole)
            ++last;
        visit(first, last);
        first = last - 1;
    }
}

/// Twice the area that a ring encloses as seen from above, positive where it runs counter-clockwise.
double areaFromAbove(const std::vector<glm::dvec3>& points)
{
    double area = 0.0;
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const glm::dvec3 a = points[i] - points[0], b = points[i + 1] - points[0];
        area += a.x * b.y - a.y * b.x;
    }
    return area;
}

class Walls
{
public:
    Walls(MeshData& mesh, std::vector<std::uint32_t>& indices)
        : m_mesh(mesh)
        , m_indices(indices)
    {
    }

    /// The walls of a ring up to a roof; local coordinates.
    void add(const std::vector<glm::dvec3>& ring, bool hole, double roof)
    {
        const bool isForward = (areaFromAbove(ring) >= 0.0) != hole; // what is walled in lies to the left
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const glm::dvec3& next = ring[(i + 1) % ring.size()];
            addWall(isForward ? ring[i] : next, isForward ? next : ring[i], roof);
        }
    }

private:
    void addWall(const glm::dvec3& from, const glm::dvec3& to, double roof)
    {
        const glm::dvec3 outwards(to.y - from.y, from.x - to.x, 0.0);
        const double length = glm::length(outwards);
        if (!(length > 0.0)) return;
        const auto first = static_cast<std::uint32_t>(m_mesh.positions.size());
        m_mesh.positions.insert(m_mesh.positions.end(),
                                {glm::vec3(from), glm::vec3(to), glm::vec3(glm::dvec3(to.x, to.y, roof)),
                                 glm::vec3(glm::dvec3(from.x, from.y, roof))});
        m_mesh.normals.resize(m_mesh.positions.size(), glm::vec3(outwards / length));
        m_indices.insert(m_indices.end(), {first, first + 1, first + 2, first, first + 2, first + 3});
    }

    MeshData& m_mesh;
    std::vector<std::uint32_t>& m_indices;
};

void addPart(MeshData& mesh, const std::vector<std::uint32_t>& indices, const QColor& color)
{
    if (indices.empty()) return;
    MeshData::Part part;
    part.firstIndex = static_cast<std::uint32_t>(mesh.indices.size());
    part.indexCount = static_cast<std::uint32_t>(indices.size());
    part.color = color;
    mesh.indices.insert(mesh.indices.end(), indices.begin(), indices.end());
    mesh.parts.push_back(part);
}

} // namespace

double FeatureAreas::heightOf(const FeatureElement& feature)
{
    const Parts& parts = feature.getParts();
    if (std::none_of(parts.begin(), parts.end(), [](const Part& part) { return part.kind == Part::Ring; }))
        return 0.0;
    const double height = readHeight(feature, "height");
    return height > 0.0 ? height : std::min(levelHeight * readHeight(feature, "building:levels"), highest);
}

std::vector<FeatureElement::Part> FeatureAreas::raised(const FeatureElement& feature)
{
    Parts parts = feature.getParts();
    const double height = heightOf(feature);
    if (height <= 0.0) return parts;
    forEachPolygon(parts, [&](std::size_t first, std::size_t last) {
        if (parts[first].points.empty()) return;
        double lowest = parts[first].points[0].z, top = lowest;
        for (const glm::dvec3& point : parts[first].points) {
            lowest = std::min(lowest, point.z);
            top = std::max(top, point.z);
        }
        for (std::size_t i = first; i < last; ++i)
            for (glm::dvec3& point : parts[i].points)
                point.z = std::max(lowest + height, top);
    });
    return parts;
}

gmx::BoundingBox FeatureAreas::boundsOf(const FeatureElement& feature)
{
    gmx::BoundingBox box = feature.getBounds();
    if (heightOf(feature) <= 0.0) return box;
    for (const Part& part : raised(feature))
        for (const glm::dvec3& point : part.points)
            box.unite(point);
    return box;
}

bool FeatureAreas::areDrawn(const FeatureElement& feature, const FeatureStyle& style)
{
    const Parts& parts = feature.getParts();
    return style.fill.alpha() > 0 &&
           std::any_of(parts.begin(), parts.end(), [](const Part& part) { return part.kind == Part::Ring; });
}

MeshData FeatureAreas::meshOf(const FeatureElement& feature, const FeatureStyle& style,
                              const glm::dvec3& origin)
{
    MeshData mesh;
    mesh.name = feature.getName();
    mesh.origin = origin;
    std::vector<std::uint32_t> areas, walls;
    SurfaceMesh surfaces(mesh, printable(feature.getName()));
    Walls wallMesh(mesh, walls);
    const Parts grounds = feature.getParts();
    const Parts roofs = raised(feature);
    const bool isRaised = heightOf(feature) > 0.0;
    forEachPolygon(roofs, [&](std::size_t first, std::size_t last) {
        FlatRegion region;
        for (std::size_t i = first; i < last; ++i) {
            for (const glm::dvec3& point : roofs[i].points)
                region.points.push_back(point - origin);
            region.ringEnds.push_back(static_cast<std::uint32_t>(region.points.size()));
        }
        const std::size_t before = areas.size();
        if (!surfaces.add(region, areas))
            ksp::Log::error(QStringLiteral("polygon %1: it encloses no area").arg(quoted(feature.getName())));
        const bool hasRoof = areas.size() > before; // else it is left out as a whole
        for (std::size_t i = first; i < last && isRaised && hasRoof; ++i) {
            if (roofs[i].points.empty()) continue;
            std::vector<glm::dvec3> ring;
            for (const glm::dvec3& point : grounds[i].points)
                ring.push_back(point - origin);
            wallMesh.add(ring, i > first, roofs[i].points[0].z - origin.z);
        }
    });
    addPart(mesh, walls, style.wall);
    addPart(mesh, areas, style.fill);
    return mesh;
}
