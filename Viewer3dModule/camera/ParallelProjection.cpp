#include <Viewer3dModule/camera/ParallelProjection.h>

#include <QtCore/QSizeF>

#include <glm/gtc/matrix_transform.hpp>

#include <limits>

namespace {

constexpr double smallest = std::numeric_limits<float>::min();
constexpr double largest = std::numeric_limits<float>::max();
constexpr double step = 0.1;

/// Near 1 the ratio moves in even steps, elsewhere by factors of two.
bool isInBand(double ratio)
{
    return ratio > 0.2 && ratio < 2.0;
}

} // namespace

glm::dmat4 ParallelProjection::calcProjectionMatrix(const QSizeF& viewport, double zFar, double zNear) const
{
    const double hw = viewport.width() * 0.5 * m_ratio;
    const double hh = viewport.height() * 0.5 * m_ratio;
    return glm::orthoRH_NO(-hw, hw, -hh, hh, zNear, zFar);
}

void ParallelProjection::zoom(double delta)
{
    if (isInBand(m_ratio)) {
        m_ratio += delta;
    } else if (m_ratio <= largest) {
        m_ratio *= delta > 0.0 ? 2.0 : 0.5;
    }
}

void ParallelProjection::zoomIn()
{
    if (isInBand(m_ratio)) {
        m_ratio -= step;
    } else if (m_ratio >= smallest) {
        m_ratio *= 0.5;
    }
}

void ParallelProjection::zoomOut()
{
    if (isInBand(m_ratio)) {
        m_ratio += step;
    } else if (m_ratio <= largest) {
        m_ratio += m_ratio;
    }
}

void ParallelProjection::serialize(ksp::IArchive& archive)
{
    serializeNumber(archive, m_ratio);
}

std::unique_ptr<IProjection> ParallelProjection::clone() const
{
    return std::make_unique<ParallelProjection>(*this);
}
