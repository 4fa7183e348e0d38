#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtGui/QImage>
#include <QtGui/QPolygonF>

/// The pixels of a viewport that a selection looks at, origin top left, y down. Belongs to the polygon what
/// belongs to both of these:
/// - the pixels whose centres lie in the polygon's bounding rectangle, borders included;
/// - for a polygon of more than 2 points, the pixels of its interior (odd-even rule) and of its outline, one
///   pixel wide.
/// So a rectangle with whole coordinates has exactly width times height pixels. A polygon with a coordinate
/// that is not finite, or beyond 1e12, has none.
class VIEWER3DMODULE_EXPORT SelectionMask
{
public:
    /// No pixels.
    SelectionMask() = default;
    SelectionMask(const QPolygonF& polygon, const QSize& viewport);
    /// For a rectangle, whose outline adds no pixels to those of the first condition, its diagonal, for which
    /// nothing need be painted; else the polygon. Both have the same pixels.
    static QPolygonF simplified(const QPolygonF& polygon);
    /// All other pixels of the viewport.
    SelectionMask inverted() const;

    const QSize& viewport() const { return m_viewport; }
    /// The rectangle of the first condition, pixels.
    const QRectF& rect() const { return m_rect; }
    /// Whether the second condition counts.
    bool hasBits() const { return m_hasBits; }
    /// The second condition: a bit a pixel, QImage::Format_MonoLSB, 1 inside; lines are padded to 32 bits.
    const QImage& bits() const { return m_bits; }
    /// The pixels of the viewport for which the first condition holds; an empty rectangle for none.
    const QRect& pixels() const { return m_pixels; }
    /// Whether the pixel belongs to the area. It must lie in the viewport.
    bool contains(int x, int y) const
    {
        return m_pixels.contains(x, y) && (!m_hasBits || bit(m_bits.constScanLine(y), x));
    }
    /// Whether all pixels of the rectangle that lie in the viewport belong to the area.
    bool containsAll(const QRect& rect) const;
    /// Whether any of them does.
    bool containsAny(const QRect& rect) const;

private:
    static bool bit(const uchar* row, int x) { return (row[x / 8] >> (x % 8)) & 1; }
    bool hasBit(const QRect& rect, bool wanted) const;
    void findPixels();
    void paint(const QPolygonF& polygon);

    QSize m_viewport;
    QRectF m_rect;
    QRect m_pixels;
    bool m_hasBits = false;
    QImage m_bits;
};
