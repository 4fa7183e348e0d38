#include <viewer/DepthCamera.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cmath>

namespace {

/// What single precision adds to the size of a box that is drawn, as a share of it.
constexpr double roundingOfDrawing = 1e-6;

/// A flat face across the line of sight must not lie on the near and far planes themselves.
gmx::BoundingBox enlarged(const gmx::BoundingBox& box)
{
    const glm::dvec3 margin(roundingOfDrawing * box.getDiagonal());
    return gmx::BoundingBox(box.getMin() - margin, box.getMax() + margin);
}

QJsonArray toArray(const glm::dvec3& vector)
{
    return {vector.x, vector.y, vector.z};
}

QJsonArray toRows(const glm::dmat4& matrix)
{
    QJsonArray rows;
    for (int row = 0; row < 4; ++row)
        rows.append(QJsonArray{matrix[0][row], matrix[1][row], matrix[2][row], matrix[3][row]});
    return rows;
}

} // namespace

DepthCamera::DepthCamera(const Viewpoint& viewpoint, const QSize& size, const gmx::BoundingBox& box,
                         double smallestNear)
    : m_viewpoint(viewpoint)
    , m_size(size)
    , m_view(viewpoint.camera().getViewMatrix())
    , m_projection(viewpoint.projectionMatrix(enlarged(box), size, smallestNear))
{
}

DepthCamera DepthCamera::withNear(double distance) const
{
    DepthCamera camera(*this);
    camera.m_projection = m_viewpoint.projection().calcProjectionMatrix(m_size, farDistance(), distance);
    return camera;
}

// Both planes from what the depth of a point becomes: z * a + b, divided by -z in a central projection.

double DepthCamera::nearDistance() const
{
    const double a = m_projection[2][2], b = m_projection[3][2];
    return m_viewpoint.isParallel() ? (b + 1.0) / a : b / (a - 1.0);
}

double DepthCamera::farDistance() const
{
    const double a = m_projection[2][2], b = m_projection[3][2];
    return m_viewpoint.isParallel() ? (b - 1.0) / a : b / (a + 1.0);
}

QByteArray DepthCamera::toJson() const
{
    const CCamera& camera = m_viewpoint.camera();
    QJsonObject object;
    object["projection"] = m_viewpoint.isParallel() ? "parallel" : "central";
    object["eye"] = toArray(camera.getPosition());
    object["target"] = toArray(camera.getView());
    object["up"] = toArray(camera.getUp());
    object["size"] = QJsonArray{m_size.width(), m_size.height()};
    const double x = m_projection[0][0], y = m_projection[1][1]; // of half the picture at a distance of 1
    if (m_viewpoint.isParallel())
        object["extents"] = QJsonArray{2.0 / x, 2.0 / y};
    else
        object["fieldOfView"] = QJsonArray{2.0 * std::atan(1.0 / x), 2.0 * std::atan(1.0 / y)};
    object["near"] = nearDistance();
    object["far"] = farDistance();
    object["viewMatrix"] = toRows(m_view);
    object["projectionMatrix"] = toRows(m_projection);
    object["matrixOrder"] = "rows";
    return QJsonDocument(object).toJson();
}
