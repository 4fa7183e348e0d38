#pragma once

#include <viewer/Viewpoint.h>

#include <QtCore/QSize>
#include <glm/glm.hpp>

#include <optional>

class CommandParser;
class Scene3d;

/// Where to look from, and the size of what is seen: the options of every command that draws. Points are
/// model coordinates.
struct CameraOptions
{
    /// A position of one's own instead of a standard view.
    struct Position
    {
        glm::dvec3 eye;
        glm::dvec3 target;
        glm::dvec3 up; ///< never along the line of sight
    };

    StandardView view = StandardView::Iso;
    IProjection::Projection projection = IProjection::Central;
    std::optional<Position> position;
    QSize size = QSize(1280, 720); ///< pixels

    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static CameraOptions read(const CommandParser& parser);

    /// The viewpoint in scene coordinates. The scene's bounds must be up to date; visible is the box of what
    /// there is to see in it, which standard views fit.
    Viewpoint viewpoint(const Scene3d& scene, const gmx::BoundingBox& visible) const;
};
