#include <Viewer3dModule/fences/fence_overlap.h>

#include <Viewer3dModule/fences/fence_polygon.h>

#include <algorithm>
#include <limits>

namespace fence_overlap {
namespace {

using Outline = std::vector<glm::dvec2>;

bool areFinite(const Corners& corners)
{
    return std::all_of(corners.begin(), corners.end(),
                       [](const glm::dvec3& corner) { return fence_polygon::isFinite(corner); });
}

/// What of the corners' hull lies on the side of a plane where sign * z >= sign * depth.
Corners clipped(const Corners& corners, double depth, double sign)
{
    Corners kept;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const glm::dvec3& from = corners[i];
        const glm::dvec3& to = corners[(i + 1) % corners.size()];
        const double before = sign * (from.z - depth);
        const double after = sign * (to.z - depth);
        if (before >= 0.0) kept.push_back(from);
        if ((before > 0.0 && after < 0.0) || (before < 0.0 && after > 0.0)) {
            kept.push_back(glm::mix(from, to, before / (before - after)));
            kept.back().z = depth;
        }
    }
    return kept;
}

double cross(const glm::dvec2& a, const glm::dvec2& b)
{
    return a.x * b.y - a.y * b.x;
}

bool boxesMeet(const glm::dvec2& a, const glm::dvec2& b, const glm::dvec2& c, const glm::dvec2& d)
{
    return glm::all(glm::lessThanEqual(glm::min(a, b), glm::max(c, d))) &&
           glm::all(glm::lessThanEqual(glm::min(c, d), glm::max(a, b)));
}

/// Whether two segments have a point in common.
bool segmentsMeet(const glm::dvec2& a, const glm::dvec2& b, const glm::dvec2& c, const glm::dvec2& d)
{
    if (!boxesMeet(a, b, c, d)) return false;
    const double ofC = cross(b - a, c - a), ofD = cross(b - a, d - a);
    const double ofA = cross(d - c, a - c), ofB = cross(d - c, b - c);
    return !((ofC > 0.0 && ofD > 0.0) || (ofC < 0.0 && ofD < 0.0) || (ofA > 0.0 && ofB > 0.0) ||
             (ofA < 0.0 && ofB < 0.0));
}

/// Whether a convex outline holds the point.
bool holds(const Outline& outline, const glm::dvec2& point)
{
    if (outline.size() < 3) return false;
    bool left = false, right = false;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const double side = cross(outline[(i + 1) % outline.size()] - outline[i], point - outline[i]);
        left |= side > 0.0;
        right |= side < 0.0;
    }
    return left != right;
}

/// Where no edges meet, the outline lies in one piece of what the polygon divides the plane into, or around
/// all of it.
bool reachesPolygon(const std::vector<glm::vec2>& polygon, const Outline& outline)
{
    for (const glm::dvec2& corner : outline)
        if (fence_polygon::contains(polygon, corner)) return true;
    for (std::size_t k = 0; k + 1 < polygon.size(); ++k)
        for (std::size_t i = 0; i < outline.size(); ++i)
            if (segmentsMeet(outline[i], outline[(i + 1) % outline.size()], polygon[k], polygon[k + 1]))
                return true;
    return !polygon.empty() && holds(outline, polygon.front());
}

} // namespace

bool reaches(const SweptPolygon& fence, Corners corners)
{
    if (!areFinite(corners)) return false;
    corners = clipped(corners, fence.zNear, 1.0);
    if (fence.zFar > fence.zNear) corners = clipped(corners, fence.zFar, -1.0);
    if (fence.spreads) corners = clipped(corners, std::numeric_limits<float>::min(), 1.0); // before the eye
    Outline outline;
    for (const glm::dvec3& corner : corners)
        outline.emplace_back(fence.spreads ? glm::dvec2(corner) / corner.z : glm::dvec2(corner));
    return reachesPolygon(fence.polygon, outline);
}

namespace {

/// The distance of the origin from a segment, squared.
double squaredDistance(const glm::dvec3& from, const glm::dvec3& to)
{
    const glm::dvec3 way = to - from;
    const double length = glm::dot(way, way);
    const double t = length > 0.0 ? std::clamp(-glm::dot(from, way) / length, 0.0, 1.0) : 0.0;
    const glm::dvec3 nearest = from + t * way;
    return glm::dot(nearest, nearest);
}

/// Whether the origin's foot in the plane of the triangle lies in it; the plane's distance is squared then.
bool hasFoot(const Corners& corners, double& distance)
{
    const glm::dvec3 normal = glm::cross(corners[1] - corners[0], corners[2] - corners[0]);
    const double size = glm::dot(normal, normal);
    if (!(size > 0.0)) return false;
    for (std::size_t i = 0; i < 3; ++i) {
        const glm::dvec3& from = corners[i];
        if (glm::dot(glm::cross(corners[(i + 1) % 3] - from, -from), normal) < 0.0) return false;
    }
    const double height = glm::dot(normal, corners[0]);
    distance = height * height / size;
    return true;
}

} // namespace

bool reachesSphere(double radius, const Corners& corners)
{
    if (!(radius >= 0.0) || !areFinite(corners)) return false;
    double distance = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < corners.size(); ++i)
        distance = std::min(distance, squaredDistance(corners[i], corners[(i + 1) % corners.size()]));
    double ofPlane = 0.0;
    if (corners.size() == 3 && hasFoot(corners, ofPlane)) distance = std::min(distance, ofPlane);
    return distance <= radius * radius;
}

} // namespace fence_overlap
