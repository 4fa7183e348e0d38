#pragma once

#include <QtGui/QImage>

#include <cmath>

/// The distance that a depth map holds at a pixel, origin top left.
inline float distanceAt(const QImage& map, int x, int y)
{
    return reinterpret_cast<const float*>(map.constScanLine(y))[x];
}

/// Number of pixels that something was drawn to.
inline int coveredCount(const QImage& map)
{
    int count = 0;
    for (int y = 0; y < map.height(); ++y)
        for (int x = 0; x < map.width(); ++x)
            count += !std::isnan(distanceAt(map, x, y));
    return count;
}
