#pragma once

#include <glm/glm.hpp>

#include <cstdint>
#include <string>
#include <vector>

/// A region by its contours in a plane of their own, and what can be said of it without dividing it.
struct FlatRegion
{
    using Contour = std::vector<glm::dvec2>;

    std::string name;
    std::vector<Contour> contours;

    std::size_t pointCount() const;
    /// The larger side of the box around all points.
    double extent() const;
    /// The exact area of what is within an odd number of contours, but for rounding; slow.
    double area() const;
    /// Whether a point is within an odd number of contours.
    bool contains(const glm::dvec2& point) const;
};

/// Regions of the kinds that are hard to divide: nested holes, holes that touch, spikes with repeated points
/// and points on lines, random contours that cross themselves, and such on a grid, whose edges lie upon one
/// another. The same for the same number every time.
FlatRegion randomRegion(unsigned number);

/// Files with contours, [[[x, y], ...], ...], of a folder; none where the folder is not there.
std::vector<FlatRegion> regionsOfFolder(const std::string& folder);
