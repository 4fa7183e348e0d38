#include <viewer/elements/labelPlace.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Part = FeatureElement::Part;
using Points = std::vector<glm::dvec3>;

constexpr int scanLines = 16;

/// Twice the area of a closed polygon as the length of its normal; origin: one near it.
glm::dvec3 normalOf(const Points& ring, const glm::dvec3& origin)
{
    glm::dvec3 sum(0.0);
    for (std::size_t i = 0; i < ring.size(); ++i)
        sum += glm::cross(ring[i] - origin, ring[(i + 1) % ring.size()] - origin);
    return sum;
}

/// An area with holes, seen along the axis that its plane lies across most, about its first point.
class Area
{
public:
    Area(const Points& outline, const glm::dvec3& normal)
        : m_origin(outline.front())
        , m_normal(normal)
    {
        const glm::dvec3 steepness = glm::abs(normal);
        m_depth = steepness.x > steepness.y ? 0 : 1;
        if (steepness[m_depth] <= steepness.z) m_depth = 2; // also where there is no plane
        addRing(outline);
        for (const glm::dvec3& point : outline)
            m_middle += (point - m_origin) / static_cast<double>(outline.size());
    }
    void addRing(const Points& ring)
    {
        for (std::size_t i = 0; i < ring.size(); ++i)
            m_edges.push_back({flat(ring[i] - m_origin), flat(ring[(i + 1) % ring.size()] - m_origin)});
    }
    /// Of the widest places along some lines across the area the one farthest from its outline.
    glm::dvec3 innerPlace() const
    {
        double low = m_edges.front().from.y, high = low;
        for (const Edge& edge : m_edges) {
            low = std::min(low, edge.from.y);
            high = std::max(high, edge.from.y);
        }
        glm::dvec2 best = flat(m_middle);
        double farthest = -1.0;
        for (int i = 0; i < scanLines; ++i) {
            const double y = low + (high - low) * (i + 0.5) / scanLines;
            const auto [from, to] = widestInside(y);
            const glm::dvec2 place((from + to) / 2.0, y);
            if (!(to > from) || (to - from) / 2.0 <= farthest) continue; // no farther than its ends
            const double distance = distanceToOutline(place);
            if (distance <= farthest) continue;
            farthest = distance;
            best = place;
        }
        return lifted(best);
    }

private:
    struct Edge
    {
        glm::dvec2 from, to;
    };

    glm::dvec2 flat(const glm::dvec3& point) const
    {
        return {point[(m_depth + 1) % 3], point[(m_depth + 2) % 3]};
    }
    /// The point of the plane through the middle that lies there.
    glm::dvec3 lifted(const glm::dvec2& place) const
    {
        glm::dvec3 point = m_middle;
        point[(m_depth + 1) % 3] = place.x;
        point[(m_depth + 2) % 3] = place.y;
        if (m_normal[m_depth] != 0.0)
            point[m_depth] -= glm::dot(m_normal, point - m_middle) / m_normal[m_depth];
        return m_origin + point;
    }
    std::pair<double, double> widestInside(double y) const
    {
        std::vector<double> crossings;
        for (const auto& [from, to] : m_edges)
            if ((from.y > y) != (to.y > y))
                crossings.push_back(from.x + (y - from.y) / (to.y - from.y) * (to.x - from.x));
        std::sort(crossings.begin(), crossings.end());
        std::pair<double, double> widest(0.0, 0.0);
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
            if (crossings[i + 1] - crossings[i] > widest.second - widest.first)
                widest = {crossings[i], crossings[i + 1]};
        return widest;
    }
    double distanceToOutline(const glm::dvec2& place) const
    {
        double nearest = std::numeric_limits<double>::infinity();
        for (const auto& [from, to] : m_edges) {
            const glm::dvec2 along = to - from;
            const double length = glm::dot(along, along);
            const double t =
                length > 0.0 ? std::clamp(glm::dot(place - from, along) / length, 0.0, 1.0) : 0.0;
            nearest = std::min(nearest, glm::distance(place, from + t * along));
        }
        return nearest;
    }

    glm::dvec3 m_origin;
    glm::dvec3 m_normal;
    glm::dvec3 m_middle{0.0}; // from the origin
    int m_depth = 2;          // the axis along which it is seen
    std::vector<Edge> m_edges;
};

double lengthOf(const Points& line)
{
    double length = 0.0;
    for (std::size_t i = 1; i < line.size(); ++i)
        length += glm::distance(line[i - 1], line[i]);
    return length;
}

glm::dvec3 halfWay(const Points& line)
{
    double left = lengthOf(line) / 2.0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const double length = glm::distance(line[i - 1], line[i]);
        if (length > 0.0 && length >= left) return glm::mix(line[i - 1], line[i], left / length);
        left -= length;
    }
    return line.front();
}

/// The part for which the measure is largest, of one kind; null without any.
template <typename Measure>
const Part* largest(const std::vector<Part>& parts, Part::Kind kind, const Measure& measure)
{
    const Part* found = nullptr;
    double most = -1.0;
    for (const Part& part : parts) {
        if (part.kind != kind || part.hole || part.points.empty()) continue;
        const double value = measure(part.points);
        if (!found || value > most) {
            found = &part;
            most = value;
        }
    }
    return found;
}

glm::dvec3 insideOf(const std::vector<Part>& parts, const Part& outline)
{
    Area area(outline.points, normalOf(outline.points, outline.points.front()));
    for (const Part* part = &outline + 1; part != parts.data() + parts.size(); ++part) {
        if (part->kind != Part::Ring || !part->hole) break;
        area.addRing(part->points);
    }
    return area.innerPlace();
}

} // namespace

glm::dvec3 labelPlace(const std::vector<Part>& parts)
{
    const auto areaOf = [](const Points& ring) { return glm::length(normalOf(ring, ring.front())); };
    if (const Part* ring = largest(parts, Part::Ring, areaOf)) return insideOf(parts, *ring);
    if (const Part* line = largest(parts, Part::Line, lengthOf)) return halfWay(line->points);
    const Part* point = largest(parts, Part::Point, [](const Points&) { return 0.0; });
    return point ? point->points.front() : glm::dvec3(0.0);
}
