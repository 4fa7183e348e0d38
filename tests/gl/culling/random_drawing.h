#pragma once

#include "tests/unit/fences/FenceShapes.h"

#include <Viewer3dModule/drawables/MeshData.h>

#include <QtGui/QPen>

#include <vector>

/// What items draw that may be drawn with others at once, within a unit around the origin and of any look.
namespace random_drawing {

/// One in six is not opaque, one in ten or so not visible at all.
QColor color(Dice& dice);
/// Up to 64 pixels.
double penWidth(Dice& dice);
/// Five in six have the usual width.
QPen pen(Dice& dice, double usualWidth);
/// The numbers of vertices of a few strips.
std::vector<int> counts(Dice& dice);
/// The vertices of these strips; now and then one less.
std::vector<glm::vec3> points(Dice& dice, const std::vector<int>& counts);
/// A few parts that index random vertices: points, lines or triangles, sometimes several of these; with
/// colours of their own, of vertices, or of a texture.
MeshData mesh(Dice& dice);

} // namespace random_drawing
