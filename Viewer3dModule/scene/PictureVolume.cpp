#include <Viewer3dModule/scene/PictureVolume.h>

#include <algorithm>
#include <cmath>

namespace {

glm::dvec3 centerOf(const gmx::BoundingBox& valid)
{
    return valid.getMin() * 0.5 + valid.getMax() * 0.5; // the sum of the corners could overflow
}

glm::dvec3 halfOf(const gmx::BoundingBox& valid)
{
    return (valid.getMax() - valid.getMin()) * 0.5;
}

} // namespace

PictureVolume::PictureVolume(const glm::dmat4& viewProjection, const QSize& picture, const QRect& pixels)
{
    const glm::dvec2 size(picture.width(), picture.height());
    const glm::dmat4 rows = glm::transpose(viewProjection);
    const glm::dvec4 x = rows[0], y = rows[1], z = rows[2], w = rows[3];
    for (int i = 0; i < 4; ++i)
        m_toPixels[static_cast<std::size_t>(i)] =
            glm::dvec3((x[i] + w[i]) / 2.0 * size.x, (w[i] - y[i]) / 2.0 * size.y, w[i]);
    const double left = 2.0 * pixels.x() / size.x - 1.0;
    const double right = 2.0 * (pixels.x() + pixels.width()) / size.x - 1.0;
    const double top = 1.0 - 2.0 * pixels.y() / size.y;
    const double bottom = 1.0 - 2.0 * (pixels.y() + pixels.height()) / size.y;
    const glm::dvec4 pixelX = w * (2.0 / size.x), pixelY = w * (2.0 / size.y), none(0.0);
    const auto plane = [](const glm::dvec4& side, const glm::dvec4& outwards) {
        return Plane{side, outwards};
    };
    m_planes = {plane(x - left * w, pixelX), plane(right * w - x, pixelX), plane(y - bottom * w, pixelY),
                plane(top * w - y, pixelY),  plane(z + w, none),           plane(w - z, none)};
}

bool PictureVolume::reaches(const gmx::BoundingBox& box, double reach) const
{
    return !std::isfinite(reach) || !box.isValid() ||
           !border(std::max(reach, 0.0), allPlanes).leavesOut(centerOf(box), halfOf(box));
}

PictureVolume::Border PictureVolume::border(double reach, Planes planes) const
{
    Border border;
    for (std::size_t i = 0; planes != 0; planes >>= 1, ++i)
        if ((planes & 1u) != 0)
            border.m_planes[border.m_count++] = m_planes[i].side + reach * m_planes[i].outwards;
    return border;
}

PictureVolume::Part PictureVolume::partOf(const glm::dvec3& center, const glm::dvec3& half, double reach,
                                          Planes& planes) const
{
    if (border(reach, planes).leavesOut(center, half)) return Part::None;
    for (std::size_t i = 0; i < m_planes.size(); ++i) {
        const glm::dvec4& side = m_planes[i].side;
        if (Border::valueAt(side, center) >= Border::spreadOf(side, half)) planes &= ~(1u << i);
    }
    return planes == 0 ? Part::All : Part::Some;
}

bool PictureVolume::holds(const gmx::BoundingBox& box) const
{
    if (!box.isValid()) return false;
    const glm::dvec3 center = centerOf(box), half = halfOf(box);
    return std::all_of(m_planes.begin(), m_planes.end(), [&](const Plane& plane) {
        const double spread = Border::spreadOf(plane.side, half);
        const double low = Border::valueAt(plane.side, center) - spread;
        return low >= 0.0 || low >= -Border::toleranceOf(plane.side, center, spread);
    });
}

QRect PictureVolume::pixelsOf(const gmx::BoundingBox& box, double reach) const
{
    if (!std::isfinite(reach) || !box.isValid()) return QRect();
    const glm::dvec3 middle = centerOf(box), half = halfOf(box);
    const glm::dvec3 center =
        m_toPixels[0] * middle.x + m_toPixels[1] * middle.y + m_toPixels[2] * middle.z + m_toPixels[3];
    const glm::dvec3 x = m_toPixels[0] * half.x, y = m_toPixels[1] * half.y, z = m_toPixels[2] * half.z;
    const glm::dvec3 nearX = center - x, farX = center + x;
    glm::dvec2 least(HUGE_VAL), most(-HUGE_VAL);
    for (const glm::dvec3& edge : {nearX - y, nearX + y, farX - y, farX + y})
        for (const glm::dvec3& corner : {edge - z, edge + z}) {
            if (!(corner.z > 0.0)) return QRect();
            const glm::dvec2 pixel = glm::dvec2(corner) * (1.0 / corner.z);
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
