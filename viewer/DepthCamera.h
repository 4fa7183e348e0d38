#pragma once

#include <viewer/Viewpoint.h>

#include <QtCore/QByteArray>
#include <QtCore/QSize>

/// The camera of a depth map, in model coordinates and model units: all that turns a pixel and its distance
/// into a point of the model.
class DepthCamera
{
public:
    /// @param viewpoint     in model coordinates
    /// @param size          of the map, pixels
    /// @param box           what there is to see, model coordinates; the near and far planes enclose it
    /// @param smallestNear  how near the near plane of a central projection may come, as in
    ///                      Viewpoint::projectionMatrix
    DepthCamera(const Viewpoint& viewpoint, const QSize& size, const gmx::BoundingBox& box,
                double smallestNear);

    /// The same camera with another near plane, in front of the eye; for central projections.
    DepthCamera withNear(double distance) const;

    bool isParallel() const { return m_viewpoint.isParallel(); }
    const QSize& size() const { return m_size; }
    /// Model to eye coordinates: a rotation and a translation, looking along -z.
    const glm::dmat4& view() const { return m_view; }
    /// Eye to clip coordinates.
    const glm::dmat4& projection() const { return m_projection; }
    /// The distances of its near and far planes from the eye, model units. Those of a parallel projection may
    /// lie behind the eye, at negative distances.
    double nearDistance() const;
    double farDistance() const;

    /// The camera as a JSON object, in numbers that read back as they are. Angles are radians, matrices lists
    /// of rows.
    QByteArray toJson() const;

private:
    Viewpoint m_viewpoint;
    QSize m_size;
    glm::dmat4 m_view;
    glm::dmat4 m_projection;
};
