#pragma once

#include <viewer/OrthoFrame.h>
#include <viewer/Viewpoint.h>

#include <QtCore/QSize>
#include <glm/glm.hpp>

#include <optional>

class CameraFields;
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
    /// What is seen of a scene.
    struct View
    {
        Viewpoint viewpoint; ///< scene coordinates
        QSize size;          ///< pixels; of a picture that fits, it may be more than can be drawn
        std::optional<OrthoFrame> ortho;
    };

    static constexpr QSize usualSize{1280, 720}; // pixels

    StandardView view = StandardView::Iso;
    IProjection::Projection projection = IProjection::Central;
    std::optional<Position> position;
    std::optional<double> fov; ///< radians, vertical; nothing: as usual
    std::optional<double> gsd; ///< model units a pixel, of an ortho picture
    std::optional<QSize> size; ///< pixels; nothing: usualSize, or what an ortho picture needs to show all

    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static CameraOptions read(const CommandParser& parser);
    /// What the fields say, and the usual for what they do not. Throws as they do.
    static CameraOptions read(const CameraFields& fields);

    /// The scene's bounds must be up to date; visible is the box of what there is to see in it, scene
    /// coordinates, which standard views fit.
    View see(const Scene3d& scene, const gmx::BoundingBox& visible) const;
};
