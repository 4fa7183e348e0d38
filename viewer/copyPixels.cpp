#include <viewer/copyPixels.h>

#include <algorithm>

void copyPixels(const QImage& from, QImage& to, const QPoint& place)
{
    const std::ptrdiff_t pixel = from.depth() / 8;
    for (int row = 0; row < from.height(); ++row)
        std::copy_n(from.constScanLine(row), from.width() * pixel,
                    to.scanLine(place.y() + row) + place.x() * pixel);
}
