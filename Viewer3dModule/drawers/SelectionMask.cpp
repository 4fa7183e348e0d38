#include <Viewer3dModule/drawers/SelectionMask.h>

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double farthest = 1e12; // what the painter still draws right

bool isDrawable(const QPolygonF& polygon)
{
    return std::all_of(polygon.begin(), polygon.end(), [](const QPointF& point) {
        return std::abs(point.x()) <= farthest && std::abs(point.y()) <= farthest; // false for NaN
    });
}

QImage emptyBits(const QSize& size)
{
    QImage bits(size, QImage::Format_MonoLSB);
    if (bits.isNull()) return bits;
    // The painter sets the bit whose colour it paints with.
    bits.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    bits.fill(0);
    return bits;
}

bool isRectangle(const QPolygonF& polygon)
{
    if (polygon.size() != 4) return false;
    const auto isUpright = [](const QPointF& a, const QPointF& b) { return a.x() == b.x(); };
    const auto isLevel = [](const QPointF& a, const QPointF& b) { return a.y() == b.y(); };
    const QPointF &a = polygon[0], &b = polygon[1], &c = polygon[2], &d = polygon[3];
    return (isLevel(a, b) && isUpright(b, c) && isLevel(c, d) && isUpright(d, a)) ||
           (isUpright(a, b) && isLevel(b, c) && isUpright(c, d) && isLevel(d, a));
}

// What goes through the centres of pixels, to within the painter's rounding, leaves some of these out.
bool isBesideCentres(double border)
{
    return std::abs(border - std::floor(border) - 0.5) > 1.0 / 32.0; // false for NaN
}

int pixelFrom(double border, int size)
{
    return static_cast<int>(std::clamp(std::ceil(border - 0.5), 0.0, double(size)));
}

int pixelTo(double border, int size)
{
    return static_cast<int>(std::clamp(std::floor(border - 0.5), -1.0, double(size - 1)));
}

} // namespace

SelectionMask::SelectionMask(const QPolygonF& polygon, const QSize& viewport)
    : m_viewport(viewport)
    , m_hasBits(polygon.size() > 2)
{
    const bool drawable = !polygon.isEmpty() && isDrawable(polygon);
    if (m_hasBits) {
        m_bits = emptyBits(viewport);
        if (m_bits.isNull()) return;
        if (drawable) paint(polygon);
    }
    if (!drawable) return;
    m_rect = polygon.boundingRect();
    m_pixels.setCoords(pixelFrom(m_rect.left(), viewport.width()), pixelFrom(m_rect.top(), viewport.height()),
                       pixelTo(m_rect.right(), viewport.width()),
                       pixelTo(m_rect.bottom(), viewport.height()));
    if (m_pixels.isEmpty()) m_pixels = QRect();
}

QPolygonF SelectionMask::simplified(const QPolygonF& polygon)
{
    if (!isRectangle(polygon)) return polygon;
    for (const QPointF& corner : {polygon[0], polygon[2]})
        if (!isBesideCentres(corner.x()) || !isBesideCentres(corner.y())) return polygon;
    return QPolygonF(QVector<QPointF>{polygon[0], polygon[2]});
}

void SelectionMask::paint(const QPolygonF& polygon)
{
    QPainter painter(&m_bits);
    painter.setPen(QPen(Qt::white, 1.0));
    painter.setBrush(Qt::white);
    painter.drawPolygon(polygon, Qt::OddEvenFill);
}

SelectionMask SelectionMask::inverted() const
{
    SelectionMask other;
    other.m_viewport = m_viewport;
    other.m_rect = QRectF(QPointF(0.0, 0.0), QSizeF(m_viewport));
    other.m_hasBits = true;
    other.m_bits = emptyBits(m_viewport);
    if (other.m_bits.isNull()) return other;
    other.m_pixels = QRect(QPoint(0, 0), m_viewport);
    other.m_bits.fill(1);
    for (int y = m_pixels.top(); y <= m_pixels.bottom(); ++y) {
        uchar* row = other.m_bits.scanLine(y);
        for (int x = m_pixels.left(); x <= m_pixels.right(); ++x)
            if (contains(x, y)) row[x / 8] = static_cast<uchar>(row[x / 8] & ~(1u << (x % 8)));
    }
    return other;
}

bool SelectionMask::containsAll(const QRect& rect) const
{
    const QRect seen = rect & QRect(QPoint(0, 0), m_viewport);
    if (!m_pixels.contains(seen)) return seen.isEmpty();
    return !m_hasBits || !hasBit(seen, false);
}

bool SelectionMask::containsAny(const QRect& rect) const
{
    const QRect seen = rect & m_pixels;
    return !seen.isEmpty() && (!m_hasBits || hasBit(seen, true));
}

// Whether the rectangle, which lies in the viewport, has a bit of this value. Eight at a time where they are
// all of the other value.
bool SelectionMask::hasBit(const QRect& rect, bool wanted) const
{
    const uchar without = wanted ? 0x00 : 0xFF;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        const uchar* row = m_bits.constScanLine(y);
        for (int x = rect.left(); x <= rect.right();) {
            if (x % 8 == 0 && row[x / 8] == without)
                x += 8;
            else if (bit(row, x) == wanted)
                return true;
            else
                ++x;
        }
    }
    return false;
}
