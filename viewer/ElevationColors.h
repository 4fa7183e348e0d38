#pragma once

#include <QtCore/QString>
#include <QtGui/QColor>

#include <utility>
#include <vector>

class QIODevice;

/// Colours by height: levels in ascending order, model coordinates. A height between two levels has a colour
/// between theirs, or, when they are discrete, that of the lower one; beyond them the first and the last
/// colour hold.
class ElevationColors
{
public:
    using Levels = std::vector<std::pair<double, QColor>>;
    static constexpr std::size_t mostLevels = 256;         // that the shaders hold
    static constexpr std::size_t mostDiscreteLevels = 128; // of which they take two each

    /// Blue through green and yellow to red, from the lowest height to the highest. Discrete ones share the
    /// range evenly. Where there is no range, half a unit to either side is taken.
    static ElevationColors over(double lowest, double highest, bool isDiscrete);
    /// Lines of a height and a colour (a name, #rrggbb or #aarrggbb), ascending; what follows another # is a
    /// comment. Throws ksp::CommonError, whose text begins with the file's name and the number of the line.
    static ElevationColors read(const QString& path, bool isDiscrete);
    /// The same of what was opened; the text begins with the number of the line.
    static ElevationColors read(QIODevice& device, bool isDiscrete);

    /// One and more.
    const Levels& levels() const { return m_levels; }
    bool isDiscrete() const { return m_isDiscrete; }
    /// The colour of a height, channel by channel to the nearest of 8 bits.
    QColor at(double height) const;

private:
    ElevationColors(Levels levels, bool isDiscrete);

    Levels m_levels;
    bool m_isDiscrete;
};
