#pragma once

#include <QtCore/QVariant>
#include <glm/glm.hpp>

#include <vector>

/// What is swept along a line: points seen along it, x to the right and y up, in model units.
struct CrossSection
{
    /// As programs take them: 32 at most.
    std::vector<glm::vec2> points;
    /// One a point, of length 1.
    std::vector<glm::vec2> normals;

    /// Of a property: a list of points [across, up], or such a list as text. Each edge has normals of its own
    /// as far as there is room, so that corners stay sharp; they point out of a section that is closed. None
    /// for anything else, for fewer than two points and for more than 32.
    static CrossSection of(const QVariant& property);
    bool isEmpty() const { return points.empty(); }
    /// The distance of the farthest point from the line.
    double reach() const;
};
