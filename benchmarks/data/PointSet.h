#pragma once

#include <QtCore/QtGlobal>
#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

/// Points with a colour each, spread evenly over the view. The same numbers at every call.
struct PointSet
{
    explicit PointSet(qint64 count);

    std::vector<glm::vec3> positions;
    std::vector<std::uint32_t> colors; ///< bytes red, green, blue, alpha (255) in memory order
};
