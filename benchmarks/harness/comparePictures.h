#pragma once

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>

/// What tells that two pictures do not show the same: empty when they do. The pictures are of one size and
/// must show something: at least a thousandth of our pixels differ from the background, opaque black.
/// Where V3D_BENCHMARK_PICTURES names a folder, both are kept there, as ours.png and plain.png.
/// @param allowed  share of the covered pixels that may differ by more than 2 of 255 in a channel, where two
///                 programs round positions otherwise
QString comparePictures(const QImage& ours, const QImage& plain, double allowed);

/// How many pixels are of this colour, up to 2 of 255 in a channel.
int pixelsOf(const QImage& picture, const QColor& color);
/// The same for one item among many, which comparePictures would let pass: what tells that our picture shows
/// nothing of the colour, or otherwise than the plain one by more than a tenth and 2 pixels.
QString compareColored(const QImage& ours, const QImage& plain, const QColor& color);
