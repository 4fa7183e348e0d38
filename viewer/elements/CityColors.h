#pragma once

#include <QtCore/QString>
#include <QtGui/QColor>

/// The colours of city models whose files give none.
namespace CityColors {

/// By what a surface is ("RoofSurface", "WallSurface"), otherwise by the kind of its object ("Building",
/// "WaterBody"); one colour for all others, extensions among them.
QColor of(const QString& surfaceKind, const QString& objectType);

} // namespace CityColors
