#include <Viewer3dModule/scene/depthsToDistances.h>

#include <Viewer3dModule/scene/Scene3d.h>

#include <QtCore/QSize>
#include <glm/gtc/matrix_access.hpp>

#include <limits>

namespace {

constexpr float nothing = std::numeric_limits<float>::quiet_NaN();

/// The rows of an inverse projection that make Z and W of a point.
struct Rows
{
    glm::dvec4 z;
    glm::dvec4 w;

    bool dependOnPlace() const { return z.x != 0.0 || z.y != 0.0 || w.x != 0.0 || w.y != 0.0; }
};

/// The distance as a quotient of two lines over the depth.
struct Quotient
{
    /// For the straight part of depthValueToFrustumZ that two depths lie in.
    Quotient(const Rows& rows, float depth, float otherDepth)
    {
        const double first = Scene3d::depthValueToFrustumZ(depth);
        const double second = Scene3d::depthValueToFrustumZ(otherDepth);
        const double slope =
            (second - first) / (static_cast<double>(otherDepth) - static_cast<double>(depth));
        const double offset = first - slope * static_cast<double>(depth);
        zSlope = -rows.z.z * slope;
        zOffset = -(rows.z.z * offset + rows.z.w);
        wSlope = rows.w.z * slope;
        wOffset = rows.w.z * offset + rows.w.w;
    }
    float at(double depth) const
    {
        return static_cast<float>((zSlope * depth + zOffset) / (wSlope * depth + wOffset));
    }

    double zSlope, zOffset, wSlope, wOffset;
};

/// For projections whose Z and W are the same everywhere on a plane of one depth: all that look straight.
void convertByDepth(float* values, const QSize& size, const Rows& rows)
{
    const Quotient foreground(rows, 0.0f, 0.0005f);
    const Quotient ordinary(rows, 0.5f, 1.0f);
    const double split = Scene3d::getForegroundItemsZRange();
    float* const end = values + static_cast<std::ptrdiff_t>(size.width()) * size.height();
    for (float* value = values; value != end; ++value) {
        const auto depth = static_cast<double>(*value);
        if (*value == 1.0f)
            *value = nothing;
        else
            *value = (depth < split ? foreground : ordinary).at(depth);
    }
}

void convertByPlace(float* values, const QSize& size, const Rows& rows)
{
    const int width = size.width();
    const int height = size.height();
    for (int row = 0; row < height; ++row) {
        // A pixel stands for its corner, and its row counts down from the height; whoever works with such a
        // projection relies on it.
        const double y = 2.0 * (static_cast<double>(height - row) / height - 0.5);
        for (int col = 0; col < width; ++col, ++values) {
            const double x = 2.0 * (static_cast<double>(col) / width - 0.5);
            const glm::dvec4 place(x, y, Scene3d::depthValueToFrustumZ(*values), 1.0);
            const double distance = -glm::dot(rows.z, place) / glm::dot(rows.w, place);
            *values = *values == 1.0f ? nothing : static_cast<float>(distance);
        }
    }
}

} // namespace

void depthsToDistances(float* values, const QSize& size, const glm::dmat4& projection)
{
    const glm::dmat4 inverse = glm::inverse(projection);
    const Rows rows{glm::row(inverse, 2), glm::row(inverse, 3)};
    if (rows.dependOnPlace())
        convertByPlace(values, size, rows);
    else
        convertByDepth(values, size, rows);
}
