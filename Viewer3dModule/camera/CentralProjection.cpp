#include <Viewer3dModule/camera/CentralProjection.h>

#include <QtCore/QSizeF>

#include <cmath>

glm::dmat4 CentralProjection::calcProjectionMatrix(const QSizeF& viewport, double zFar, double zNear) const
{
    const double aspect = viewport.width() / viewport.height();
    const double t = std::tan(m_fov * 0.5);
    glm::dmat4 m(0.0);
    m[0][0] = 1.0 / (aspect * t);
    m[1][1] = 1.0 / t;
    m[2][2] = -(zFar + zNear) / (zFar - zNear);
    m[2][3] = -1.0;
    m[3][2] = -(2.0 * zFar * zNear) / (zFar - zNear);
    return m;
}

void CentralProjection::zoom(double delta)
{
    const bool wider = delta > 0.0 && m_fov < m_maxFov;
    const bool narrower = delta < 0.0 && m_fov > m_minFov;
    if (wider || narrower) m_fov += delta;
}

void CentralProjection::zoomIn()
{
    if (m_fov > m_minFov) m_fov -= m_fovStep;
}

void CentralProjection::zoomOut()
{
    if (m_fov < m_maxFov) m_fov += m_fovStep;
}

void CentralProjection::setZoom(double zoom)
{
    m_fov = std::atan(std::tan(m_baseFov) / zoom);
}

double CentralProjection::getZoom() const
{
    return std::tan(m_baseFov) / std::tan(m_fov);
}

void CentralProjection::serialize(ksp::IArchive& archive)
{
    serializeNumber(archive, m_fov);
}

std::unique_ptr<IProjection> CentralProjection::clone() const
{
    return std::make_unique<CentralProjection>(*this);
}
