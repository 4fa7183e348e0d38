#include <viewer/OrthoFrame.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Of a pixel: what the coordinates of a scene, which are floats, may be off by, and more.
constexpr double slack = 1e-3;

struct Range
{
    double low;
    int pixels;
};

/// The pixels of one axis that a range of coordinates lies in; coordinates counted in pixels.
Range around(double low, double high)
{
    const double first = std::floor(low - slack), last = std::ceil(high + slack);
    return {first, static_cast<int>(std::min<double>(last - first, std::numeric_limits<int>::max()))};
}

Range about(double middle, int pixels)
{
    return {std::round(middle - pixels / 2.0), pixels};
}

} // namespace

OrthoFrame OrthoFrame::of(const gmx::BoundingBox& box, double pixel, const std::optional<QSize>& size)
{
    const glm::dvec3 low = box.getMin() / pixel, high = box.getMax() / pixel, middle = (low + high) / 2.0;
    const Range x = size ? about(middle.x, size->width()) : around(low.x, high.x);
    const Range y = size ? about(middle.y, size->height()) : around(low.y, high.y);
    return {pixel, QSize(x.pixels, y.pixels), x.low * pixel, (y.low + y.pixels) * pixel};
}

Viewpoint OrthoFrame::viewpoint(const gmx::BoundingBox& box) const
{
    const glm::dvec3 target(left + pixel * size.width() / 2.0, top - pixel * size.height() / 2.0,
                            box.getCenter().z);
    const glm::dvec3 eye = target + glm::dvec3(0.0, 0.0, std::max(box.getDiagonal(), pixel));
    Viewpoint result =
        Viewpoint::looking(eye, target, glm::dvec3(0.0, 1.0, 0.0), IProjection::Parallel, size);
    result.projection().setZoom(pixel);
    return result;
}
