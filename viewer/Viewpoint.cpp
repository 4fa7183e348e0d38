#include <viewer/Viewpoint.h>

#include <Viewer3dModule/camera/CentralProjection.h>
#include <Viewer3dModule/camera/ParallelProjection.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

const glm::dvec3 vertical(0.0, 0.0, 1.0);
constexpr double margin = 1.03;      // of what is fitted
constexpr double tiltOfPlans = 1e-6; // radians off the vertical, far below a pixel

double tangentOfHalfView(const IProjection& projection)
{
    return std::tan(static_cast<const CentralProjection&>(projection).getFov() / 2.0);
}

std::unique_ptr<IProjection> makeCentral(double fov)
{
    std::unique_ptr<IProjection> projection = makeProjection(IProjection::Central);
    projection->zoom(fov - Viewpoint::usualFov); // setZoom knows no angles from 90 degrees on
    return projection;
}

double aspectOf(const QSizeF& size)
{
    return size.width() / size.height();
}

/// The smallest and largest value of point -> number over the corners of the box.
template <typename Measure>
std::pair<double, double> rangeOver(const gmx::BoundingBox& box, Measure measure)
{
    double low = std::numeric_limits<double>::infinity(), high = -low;
    for (const glm::dvec3& corner : box.getCorners()) {
        const double value = measure(corner);
        low = std::min(low, value);
        high = std::max(high, value);
    }
    return {low, high};
}

} // namespace

std::unique_ptr<IProjection> makeProjection(IProjection::Projection type)
{
    if (type == IProjection::Parallel) return std::make_unique<ParallelProjection>();
    return std::make_unique<CentralProjection>();
}

QStringList standardViewNames()
{
    return {"iso", "top", "bottom", "front", "back", "left", "right"};
}

glm::dvec3 standardViewDirection(StandardView view)
{
    switch (view) {
    case StandardView::Iso:
        return glm::normalize(glm::dvec3(-1.0, 1.0, -0.85));
    case StandardView::Top:
        return glm::normalize(glm::dvec3(0.0, tiltOfPlans, -1.0));
    case StandardView::Bottom:
        return glm::normalize(glm::dvec3(0.0, tiltOfPlans, 1.0));
    case StandardView::Front:
        return {0.0, 1.0, 0.0};
    case StandardView::Back:
        return {0.0, -1.0, 0.0};
    case StandardView::Left:
        return {1.0, 0.0, 0.0};
    case StandardView::Right:
        return {-1.0, 0.0, 0.0};
    }
    return {0.0, 1.0, 0.0};
}

Viewpoint::Viewpoint()
    : m_projection(makeProjection(IProjection::Central))
{
    m_camera.setDefaultCamera();
}

Viewpoint::Viewpoint(const CCamera& camera, std::unique_ptr<IProjection> projection)
    : m_camera(camera)
    , m_projection(std::move(projection))
{
}

Viewpoint::Viewpoint(const Viewpoint& other)
    : m_camera(other.m_camera)
    , m_projection(other.m_projection->clone())
{
}

Viewpoint& Viewpoint::operator=(const Viewpoint& other)
{
    m_camera = other.m_camera;
    m_projection = other.m_projection->clone();
    return *this;
}

Viewpoint Viewpoint::looking(const glm::dvec3& eye, const glm::dvec3& target, const glm::dvec3& up,
                             IProjection::Projection type, const QSizeF& size, double fov)
{
    Viewpoint result(CCamera(), makeCentral(fov));
    result.m_camera.setPositionCamera(eye, target, up);
    result.m_camera.setCenter(target);
    result.setProjectionType(type, size);
    return result;
}

Viewpoint Viewpoint::fitting(const gmx::BoundingBox& box, const glm::dvec3& direction,
                             IProjection::Projection type, const QSizeF& size, double fov)
{
    const glm::dvec3 center = box.getCenter();
    const glm::dvec3 right = glm::normalize(glm::cross(direction, vertical));
    const glm::dvec3 up = glm::cross(right, direction);
    const glm::dvec2 half(aspectOf(size), 1.0); // of the picture, in units of its half height

    Viewpoint result(CCamera(), type == IProjection::Central ? makeCentral(fov) : makeProjection(type));
    glm::dvec2 shift;
    double distance;
    if (type == IProjection::Parallel) {
        const double width =
            2.0 * rangeOver(box, [&](auto& p) { return glm::dot(p - center, right); }).second;
        const double height = 2.0 * rangeOver(box, [&](auto& p) { return glm::dot(p - center, up); }).second;
        const double ratio = std::max(width / size.width(), height / size.height());
        result.m_projection->setZoom(margin * std::max(ratio, std::numeric_limits<float>::min() * 1.0));
        distance = std::max(box.getDiagonal(), result.m_projection->getZoom());
        shift = glm::dvec2(0.0);
    } else {
        // A corner at (x, y, z) off the centre is in the picture when |x - shift| <= (distance + z) *
        // tangent, for both axes: two straight bounds each, whose crossing gives the shift and the least
        // distance.
        const double tangent = tangentOfHalfView(*result.m_projection) / margin;
        const auto solve = [&](const glm::dvec3& axis, double slope) {
            const auto bound = [&](double sign) {
                return rangeOver(box,
                                 [&](const glm::dvec3& p) {
                                     return sign * glm::dot(p - center, axis) -
                                            glm::dot(p - center, direction) * slope;
                                 })
                    .second;
            };
            const double positive = bound(1.0), negative = bound(-1.0);
            return glm::dvec2((positive - negative) / 2.0, (positive + negative) / (2.0 * slope));
        };
        const glm::dvec2 x = solve(right, tangent * half.x), y = solve(up, tangent);
        shift = glm::dvec2(x[0], y[0]);
        distance = std::max({x[1], y[1], box.getDiagonal() * 1e-3, 1e-30});
    }
    const glm::dvec3 target = center + shift.x * right + shift.y * up;
    result.m_camera.setPositionCamera(target - distance * direction, target, vertical);
    result.m_camera.setCenter(center);
    return result;
}

double Viewpoint::unitsPerPixel(double depth, const QSizeF& size) const
{
    if (isParallel()) return m_projection->getZoom();
    return 2.0 * depth * tangentOfHalfView(*m_projection) / size.height();
}

double Viewpoint::depthOf(const glm::dvec3& point) const
{
    return glm::dot(point - m_camera.getPosition(), m_camera.getDirection());
}

glm::dvec3 Viewpoint::pointAt(const glm::dvec2& pixel, double depth, const QSizeF& size) const
{
    const double unit = unitsPerPixel(depth, size);
    const double right = (pixel.x - size.width() / 2.0) * unit;
    const double up = (size.height() / 2.0 - pixel.y) * unit;
    // getLeftVector() points to the right.
    return m_camera.getPosition() + depth * m_camera.getDirection() + right * m_camera.getLeftVector() +
           up * m_camera.getUpVector();
}

std::optional<glm::dvec2> Viewpoint::pixelOf(const glm::dvec3& point, const QSizeF& size) const
{
    const double depth = depthOf(point);
    if (!isParallel() && depth <= 0.0) return std::nullopt;
    const glm::dvec3 from = point - m_camera.getPosition();
    const double unit = unitsPerPixel(depth, size);
    return glm::dvec2(size.width() / 2.0 + glm::dot(from, m_camera.getLeftVector()) / unit,
                      size.height() / 2.0 - glm::dot(from, m_camera.getUpVector()) / unit);
}

glm::dmat4 Viewpoint::projectionMatrix(const gmx::BoundingBox& box, const QSizeF& size,
                                       double smallestNear) const
{
    const auto [first, last] = rangeOver(box, [this](const glm::dvec3& corner) { return depthOf(corner); });
    const double slack = 1e-3 * (last - first) + 1e-6 * (std::abs(first) + std::abs(last));
    if (isParallel()) {
        const double low = first - slack, high = std::max(last + slack, low + 1e-6);
        return m_projection->calcProjectionMatrix(size, high, low);
    }
    const double toTarget = glm::distance(m_camera.getView(), m_camera.getPosition());
    const double zFar = std::max(last + slack, toTarget * 1e-3);
    // A near plane at a thousandth of the far one keeps a depth buffer of 24 bits sharp.
    const double lowest = std::max(std::min({smallestNear, zFar * 1e-3, toTarget * 0.1}), zFar * 1e-7);
    return m_projection->calcProjectionMatrix(size, zFar,
                                              std::min(std::max(first - slack, lowest), zFar * 0.999));
}

void Viewpoint::setProjectionType(IProjection::Projection type, const QSizeF& size)
{
    if (type == m_projection->getType()) return;
    std::unique_ptr<IProjection> other = makeProjection(type);
    const double distance = glm::distance(m_camera.getView(), m_camera.getPosition());
    if (type == IProjection::Parallel) {
        other->setZoom(unitsPerPixel(distance, size));
    } else {
        const double wanted = m_projection->getZoom() * size.height() / (2.0 * tangentOfHalfView(*other));
        m_camera.setPositionCamera(m_camera.getView() - wanted * m_camera.getDirection(), m_camera.getView(),
                                   m_camera.getUp());
    }
    m_projection = std::move(other);
}

Viewpoint Viewpoint::transformed(const glm::dmat4& matrix) const
{
    const auto map = [&](const glm::dvec3& point, double w) {
        return glm::dvec3(matrix * glm::dvec4(point, w));
    };
    Viewpoint result(*this);
    // The direction is mapped by itself: as a difference of two large points it would lose what tells them
    // apart.
    const glm::dvec3 eye = map(m_camera.getPosition(), 1.0);
    const glm::dvec3 forward = map(m_camera.getView() - m_camera.getPosition(), 0.0);
    result.m_camera.setPositionCamera(eye, eye + forward, glm::normalize(map(m_camera.getUp(), 0.0)));
    result.m_camera.setCenter(map(m_camera.getCenter(), 1.0));
    if (isParallel())
        result.m_projection->setZoom(m_projection->getZoom() * glm::length(glm::dvec3(matrix[0])));
    return result;
}
