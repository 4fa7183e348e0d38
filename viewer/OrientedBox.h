#pragma once

#include <glm/glm.hpp>

#include <array>
#include <optional>
#include <vector>

/// A box of any orientation that holds points closely.
struct OrientedBox
{
    glm::dvec3 center{0.0};
    std::array<glm::dvec3, 3> axes;      ///< of length 1, at right angles
    std::array<double, 3> halfSizes{{}}; ///< along them

    /// Along the axes about which the points spread most and least, or along those of the coordinates where
    /// the surface of that box is no larger. Points with a coordinate that is not finite are left out;
    /// nothing when none is left.
    static std::optional<OrientedBox> around(const std::vector<glm::dvec3>& points);
};
