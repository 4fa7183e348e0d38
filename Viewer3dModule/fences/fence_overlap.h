#pragma once

#include <glm/glm.hpp>

#include <vector>

/// Whether any part of a point, a segment or a triangle lies in a volume. Corners are one, two or three
/// points of the volume's own frame; what only touches the border may count as lying in it. A corner that is
/// not finite: false.
namespace fence_overlap {

using Corners = std::vector<glm::dvec3>;

/// A polygon swept along z; see Frustum3D and Prism3D.
struct SweptPolygon
{
    const std::vector<glm::vec2>& polygon; ///< closed; at depth 1 where lines of sight spread
    double zNear;
    double zFar;  ///< not above zNear: there is no end
    bool spreads; ///< along lines of sight from the origin, else in parallel
};

bool reaches(const SweptPolygon& fence, Corners corners);
/// The sphere about the origin.
bool reachesSphere(double radius, const Corners& corners);

} // namespace fence_overlap
