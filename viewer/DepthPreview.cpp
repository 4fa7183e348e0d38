#include <viewer/DepthPreview.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int longestSide = 2048; // pixels
constexpr double brightest = 255.0;
constexpr double darkest = 40.0; // still told from a black background

int divideUp(int count, int step)
{
    return (count + step - 1) / step;
}

} // namespace

DepthPreview::DepthPreview(const QSize& size)
    : m_mapSize(size)
    , m_step(divideUp(std::max(size.width(), size.height()), longestSide))
    , m_size(divideUp(size.width(), m_step), divideUp(size.height(), m_step))
    , m_nearest(static_cast<std::size_t>(m_size.width()) * static_cast<std::size_t>(m_size.height()),
                std::numeric_limits<float>::quiet_NaN())
{
}

void DepthPreview::add(const float* distances, int rowCount)
{
    const int end = m_rowCount + rowCount;
    for (; m_rowCount < end; ++m_rowCount) {
        float* const row =
            m_nearest.data() + static_cast<std::ptrdiff_t>(m_rowCount / m_step) * m_size.width();
        for (int i = 0; i < m_mapSize.width(); ++i)
            row[i / m_step] = std::fmin(row[i / m_step], *distances++); // which passes NaN over
    }
}

QImage DepthPreview::image() const
{
    float nearest = std::numeric_limits<float>::infinity(), farthest = -nearest;
    for (const float distance : m_nearest) {
        nearest = std::fmin(nearest, distance);
        farthest = std::fmax(farthest, distance);
    }
    const double range = farthest > nearest ? static_cast<double>(farthest) - nearest : 1.0;
    QImage image(m_size, QImage::Format_ARGB32);
    const float* distance = m_nearest.data();
    for (int y = 0; y < m_size.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < m_size.width(); ++x, ++distance) {
            const double share = (static_cast<double>(*distance) - nearest) / range;
            const int grey = std::isnan(*distance)
                                 ? 0
                                 : static_cast<int>(std::lround(brightest + share * (darkest - brightest)));
            line[x] = std::isnan(*distance) ? qRgba(0, 0, 0, 0) : qRgb(grey, grey, grey);
        }
    }
    return image;
}
