#pragma once

#include <framework/ksp/LONGID.h>

#include <QtCore/QRect>
#include <glm/glm.hpp>

/// What the drawer of labels finds a place for, in whatever way it is drawn.
class ILabel
{
public:
    virtual ~ILabel() = default;

    /// Of the element that it belongs to: of labels that would meet, that of the lower one is written.
    virtual LONGID elementId() const = 0;
    /// Where it belongs, scene coordinates.
    virtual glm::dvec3 scenePlace() = 0;
    /// The pixels that it takes where its place lies at this one, y down.
    virtual QRect rectAt(const glm::dvec2& pixel) = 0;
    /// It is written by the next draw, which puts its lower left corner there, pixels of the pass, y down;
    /// labels that find their pixels by themselves do not look at that.
    virtual void setCorner(const glm::dvec2& pixel) = 0;
};
