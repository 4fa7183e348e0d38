#include <benchmarks/data/PointSet.h>

#include <benchmarks/data/Dice.h>

PointSet::PointSet(qint64 count)
{
    Dice dice;
    positions.reserve(static_cast<std::size_t>(count));
    colors.reserve(static_cast<std::size_t>(count));
    for (qint64 i = 0; i < count; ++i) {
        positions.push_back(dice.place());
        const QColor color = dice.color();
        colors.push_back(0xFF000000u | static_cast<std::uint32_t>(color.blue()) << 16 |
                         static_cast<std::uint32_t>(color.green()) << 8 |
                         static_cast<std::uint32_t>(color.red()));
    }
}
