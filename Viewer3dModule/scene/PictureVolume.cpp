#include <Viewer3dModule/scene/PictureVolume.h>

#include <algorithm>
#include <cmath>

namespace {

// Of the size of the terms that cancel out: what is drawn is worked out in single precision.
constexpr double rounding = 1e-5;

/// The range of a plane's value over a box.
struct Range
{
    double low;
    double high;
    double tolerance;

    Range(const glm::dvec4& plane, const glm::dvec3& center, const glm::dvec3& half)
    {
        const glm::dvec3 normal(plane);
        const double middle = glm::dot(normal, center) + plane.w;
        const double spread = glm::dot(glm::abs(normal), half);
        low = middle - spread;
        high = middle + spread;
        tolerance = rounding * (glm::dot(glm::abs(normal), glm::abs(center)) + spread + std::abs(plane.w));
    }
};

} // namespace

PictureVolume::PictureVolume(const glm::dmat4& viewProjection, const QSize& picture, const QRect& pixels)
    : m_viewProjection(viewProjection)
    , m_size(picture.width(), picture.height())
{
    const glm::dmat4 rows = glm::transpose(viewProjection);
    const glm::dvec4 x = rows[0], y = rows[1], z = rows[2], w = rows[3];
    const double left = 2.0 * pixels.x() / m_size.x - 1.0;
    const double right = 2.0 * (pixels.x() + pixels.width()) / m_size.x - 1.0;
    const double top = 1.0 - 2.0 * pixels.y() / m_size.y;
    const double bottom = 1.0 - 2.0 * (pixels.y() + pixels.height()) / m_size.y;
    const glm::dvec4 pixelX = w * (2.0 / m_size.x), pixelY = w * (2.0 / m_size.y), none(0.0);
    const auto plane = [](const glm::dvec4& side, const glm::dvec4& outwards) {
        return Plane{side, outwards, glm::abs(glm::dvec3(side))};
    };
    m_planes = {plane(x - left * w, pixelX), plane(right * w - x, pixelX), plane(y - bottom * w, pixelY),
                plane(top * w - y, pixelY),  plane(z + w, none),           plane(w - z, none)};
}

bool PictureVolume::reaches(const gmx::BoundingBox& box, double reach) const
{
    if (!std::isfinite(reach) || !box.isValid()) return true;
    Planes planes = allPlanes;
    return partOf(box.getCenter(), box.getSize() / 2.0, reach, planes) != Part::None;
}

PictureVolume::Part PictureVolume::partOf(const glm::dvec3& center, const glm::dvec3& half, double reach,
                                          Planes& planes) const
{
    for (std::size_t i = 0; i < m_planes.size(); ++i) {
        const Planes bit = 1u << i;
        if ((planes & bit) == 0) continue;
        const Plane& plane = m_planes[i];
        const double middle = glm::dot(glm::dvec3(plane.side), center) + plane.side.w;
        const double spread = glm::dot(plane.spread, half);
        if (middle - spread >= 0.0) planes &= ~bit;
        if (middle + spread >= 0.0) continue; // most planes of most boxes
        const Range farther(plane.side + reach * plane.outwards, center, half);
        if (!(farther.high >= -farther.tolerance)) return Part::None;
    }
    return planes == 0 ? Part::All : Part::Some;
}

bool PictureVolume::holds(const gmx::BoundingBox& box) const
{
    if (!box.isValid()) return false;
    const glm::dvec3 center = box.getCenter(), half = box.getSize() / 2.0;
    return std::all_of(m_planes.begin(), m_planes.end(), [&](const Plane& plane) {
        const Range range(plane.side, center, half);
        return range.low >= -range.tolerance;
    });
}

QRect PictureVolume::pixelsOf(const gmx::BoundingBox& box, double reach) const
{
    if (!std::isfinite(reach) || !box.isValid()) return QRect();
    const glm::dvec3 half = box.getSize() / 2.0;
    const glm::dvec4 center = m_viewProjection * glm::dvec4(box.getCenter(), 1.0);
    const glm::dvec4 x = m_viewProjection[0] * half.x, y = m_viewProjection[1] * half.y,
                     z = m_viewProjection[2] * half.z;
    glm::dvec2 least(HUGE_VAL), most(-HUGE_VAL);
    for (int corner = 0; corner < 8; ++corner) {
        const glm::dvec4 clip = center + ((corner & 1) != 0 ? x : -x) + ((corner & 2) != 0 ? y : -y) +
                                ((corner & 4) != 0 ? z : -z);
        if (!(clip.w > 0.0)) return QRect();
        const glm::dvec2 pixel = (glm::dvec2(clip.x, -clip.y) / clip.w + 1.0) / 2.0 * m_size;
        least = glm::min(least, pixel);
        most = glm::max(most, pixel);
    }
    // Farther away than any picture is large, and within an int.
    const double farthest = 1e6;
    const auto whole = [farthest](double value) {
        return static_cast<int>(std::clamp(value, -farthest, farthest));
    };
    QRect pixels;
    pixels.setCoords(whole(std::floor(least.x - reach)), whole(std::floor(least.y - reach)),
                     whole(std::ceil(most.x + reach)), whole(std::ceil(most.y + reach)));
    return pixels;
}
