#pragma once

#include <QtCore/QSize>
#include <glm/glm.hpp>

/// What all workloads look at: 20 by 11.25 units around the origin, which fill the picture, some units deep.
struct View
{
    QSize size;           ///< pixels
    glm::mat4 view;       ///< scene to eye coordinates
    glm::mat4 projection; ///< eye to clip coordinates

    /// How much of the scene there is to see: a window around the middle of the whole view, of this share of
    /// its area.
    static View ofShare(double share);
    static View whole() { return ofShare(1.0); }

    /// Half of the region that is seen at z = 0, scene units.
    static constexpr float halfWidth = 10.0f, halfHeight = 5.625f;
};
