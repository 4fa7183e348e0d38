#pragma once

#include <framework/HostFramework_export.h>
#include <framework/gmx/BoundingBox.h>

#include <glm/glm.hpp>

#include <optional>

namespace gmx {

/// A volume that limits what is shown, measured or exported, as the host sees it: fixed when it was made, in
/// the coordinates into which its maker brought it. Needs no OpenGL context and is safe to read from several
/// threads.
class HOSTFRAMEWORK_EXPORT IFence3D
{
public:
    virtual ~IFence3D() = default;

    /// Whether the point lies in the volume or, where the shape counts it in, on its border. False for a
    /// point with a NaN.
    virtual bool contains(const glm::dvec3& point) const = 0;

    /// A box that holds every point that contains() accepts, a little larger than the volume; the null box
    /// when there is no such point. No value when the volume has no end (or none that doubles can hold): then
    /// nothing may be left out by its box.
    virtual std::optional<BoundingBox> getBoundingBox() const = 0;

protected:
    IFence3D() = default;
    IFence3D(const IFence3D&) = default;
    IFence3D& operator=(const IFence3D&) = default;
};

} // namespace gmx
