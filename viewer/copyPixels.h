#pragma once

#include <QtGui/QImage>

/// Copies an image into another one of the same format, its upper left corner to the place. All of it must
/// fit.
void copyPixels(const QImage& from, QImage& to, const QPoint& place);
