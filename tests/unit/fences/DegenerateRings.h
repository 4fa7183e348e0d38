#pragma once

#include "FenceShapes.h"

#include <limits>

/// Polygons that are hardly any.
namespace degenerate_rings {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

enum Kind { Collinear, WithNaN, TwoPoints, Repeated, SelfCrossing, OnePlace, Huge, kinds };

/// One of the kind; two points alone, or with a NaN, are none that a fence takes.
inline Ring make(Dice& dice, int kind)
{
    Ring ring;
    const glm::dvec2 from(dice.between(-1.0, 1.0), dice.between(-1.0, 1.0));
    const glm::dvec2 way(dice.between(-1.0, 1.0), dice.between(-1.0, 1.0));
    switch (kind) {
    case Collinear:
        for (int i = dice.between(3, 9); i > 0; --i)
            ring.push_back(from + dice.between(-1.0, 1.0) * way);
        return closed(ring);
    case WithNaN:
        ring = randomRing(dice, dice.between(3, 9), 1.0);
        ring[std::size_t(dice.between(0, int(ring.size()) - 1))][dice.between(0, 1)] = nan;
        return ring;
    case TwoPoints:
        return dice.oneIn(2) ? closed({from, way}) : Ring{from, way};
    case Repeated:
        for (const glm::dvec2& corner : randomRing(dice, dice.between(3, 9), 1.0))
            ring.insert(ring.end(), std::size_t(dice.between(1, 4)), corner);
        return ring;
    case SelfCrossing:
        return randomRing(dice, dice.between(20, 60), 1.0);
    case OnePlace:
        return Ring(std::size_t(dice.between(4, 9)), from);
    default:
        return randomRing(dice, dice.between(3, 9), 1e30);
    }
}

} // namespace degenerate_rings
