#pragma once

#include <QtCore/QString>
#include <QtGui/QImage>

/// What tells that two pictures do not show the same: empty when they do. The pictures are of one size and
/// must show something: at least a thousandth of our pixels differ from the background, opaque black.
/// Where V3D_BENCHMARK_PICTURES names a folder, both are kept there, as ours.png and plain.png.
/// @param allowed  share of the covered pixels that may differ by more than 2 of 255 in a channel, where two
///                 programs round positions otherwise
QString comparePictures(const QImage& ours, const QImage& plain, double allowed);
