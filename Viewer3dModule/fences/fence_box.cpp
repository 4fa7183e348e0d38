#include <Viewer3dModule/fences/fence_box.h>

#include <algorithm>
#include <cmath>

namespace {

/// Some 64 roundings of doubles, as a part of the largest number that takes part.
constexpr double slack = 1.0 / (1ll << 46);

double largestOf(const glm::dvec3& v)
{
    return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

} // namespace

std::optional<gmx::BoundingBox> fenceBox(const std::vector<glm::dvec3>& points,
                                         const glm::dmat4& modelToScene)
{
    gmx::BoundingBox box;
    double largest = 0.0;
    for (const glm::dvec3& point : points) {
        const glm::dvec3 mapped(modelToScene * glm::dvec4(point, 1.0));
        if (!std::isfinite(mapped.x + mapped.y + mapped.z)) return std::nullopt;
        box.unite(mapped);
        largest = std::max(largest, largestOf(point));
    }
    if (box.isNull()) return box;
    const glm::dvec3 x(modelToScene[0]), y(modelToScene[1]), z(modelToScene[2]);
    const glm::dvec3 ofModel = largest * (glm::abs(x) + glm::abs(y) + glm::abs(z));
    const double ofScene = std::max(largestOf(box.getMin()), largestOf(box.getMax()));
    const glm::dvec3 margin = slack * (ofModel + ofScene);
    return gmx::BoundingBox(box.getMin() - margin, box.getMax() + margin);
}
