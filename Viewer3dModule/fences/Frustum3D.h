#pragma once

#include <Viewer3dModule/fences/Fence3DObject.h>

#include <vector>

/// A polygon drawn on the screen of a perspective view and swept into depth, between a near and a far plane.
///
/// The fence frame is the eye space of the view in which the polygon was drawn, turned to look along +z: the
/// eye is the origin, x points to the right, y up, z is the depth. The polygon is kept in normalised screen
/// units, x and y divided by depth * tanHalfFovy, so that y runs from -1 to 1 over the screen's height. Near
/// and far are depths. A far depth that is not above the near one means that the fence has no far plane.
class VIEWER3DMODULE_EXPORT Frustum3D : public Fence3DObject
{
public:
    /// Sets the fence from a polygon in the world.
    /// @param eye, direction  where the view stands and looks, in the world; kept for the host, and read by
    ///                        nothing here
    /// @param tanHalfFovy     tangent of half the vertical angle of view, above 0
    /// @param zNear, zFar     depths of the end planes; near is 0 or more
    /// @param points          the polygon, closed: more than 3 points, the last exactly the first. Only the
    ///                        lines of sight to the points matter, not how far away they are
    /// @param fromWorld       world to fence frame, with an inverse. A camera's view matrix looks along -z;
    ///                        diag(1, 1, -1, 1) before it (on its left) makes it look along +z
    /// The fence is empty afterwards, its other fields as before, when the polygon is open or of 3 points or
    /// fewer, when a point does not lie before the eye, or when a number is not finite or not as told here.
    void setFence(const glm::dvec3& eye, const glm::dvec3& direction, double tanHalfFovy, double zNear,
                  double zFar, std::vector<glm::dvec3> points, const glm::dmat4& fromWorld);
    /// Replaces the frame only: the polygon goes with it. Without an inverse, outlines and nodes are NaN.
    void setFromWorldMatrix(const glm::dmat4& fromWorld);
    /// Removes the polygon; all else stays.
    void reset();

    /// Where the view stood when the polygon was drawn, and the direction it looked in, as they were given.
    const glm::dvec3& eye() const { return m_eye; }
    const glm::dvec3& direction() const { return m_direction; }
    /// World to fence frame.
    const glm::dmat4& fromWorldMatrix() const { return m_fromWorld; }
    double zNear() const { return m_zNear; }
    double zFar() const { return m_zFar; }
    double tanHalfFovy() const { return m_tanHalfFovy; }
    /// The polygon, closed, in normalised screen units.
    const std::vector<glm::vec2>& fence() const { return m_fence; }

    Type getType() const override { return Fence3DObject::Frustum3D; }
    /// Whether there is no polygon.
    bool empty() const override { return m_fence.empty(); }
    /// All fields in their order but the inverse matrix. Also refused: a polygon that is open or of fewer
    /// than 4 points, with an angle of view or near plane that setFence refuses; numbers that are not finite,
    /// outside the matrix.
    void serialize(ksp::CQtArchive& archive) override;
    /// Whether the point's depth is that of an end plane or between them (without far plane: the near one's
    /// or beyond) and its place on the screen, rounded to floats, in the polygon; of the polygon's edges the
    /// left and lower ones are inside. An empty fence contains nothing.
    bool contains(const glm::dvec3& point) const override;
    bool reaches(const std::vector<glm::dvec3>& corners) const override;
    std::shared_ptr<gmx::IFence3D> getIFence3D(const glm::dmat4& modelToScene) const override;

    /// The polygon in the near plane and in the far depth, in the world.
    std::vector<glm::dvec3> getNearFence() const;
    std::vector<glm::dvec3> getFarFence() const;
    /// The handles of the end planes: the polygon's centre at the near depth and at the far depth, in the
    /// world; none without a polygon. Without far plane the second is at the far depth all the same.
    std::vector<glm::dvec3> getNodes() const;
    /// The line along which the handles move: from the near to the far one, longer at both ends by 4 times
    /// the polygon's radius, measured halfway between the planes, without far plane in the near one. None
    /// where there are no handles.
    std::vector<glm::dvec3> getRay() const;
    /// Moves an end plane to where its handle meets the foot of the world point's perpendicular on the line
    /// of the handles, in the fence frame. A near plane that passes the far one trades places with it; that
    /// of a fence without far plane does not, and the fence stays without. Nor does a far depth below the
    /// near one stay there: moved, it trades places with it. At last the near depth is raised to 0.1 at
    /// least; a far one that it reaches is no plane any more. Nothing moves without handles or by a step that
    /// is not finite.
    void movePlane(const glm::dvec3& point, bool nearPlane);

private:
    bool hasFarPlane() const { return m_zFar > m_zNear; }
    bool isWhole() const;
    bool project(const std::vector<glm::dvec3>& points);
    glm::dvec3 unProject(const glm::dvec2& xy, double depth) const;
    std::vector<glm::dvec3> getFence(double depth) const;
    glm::dvec3 nodeLine() const;

    glm::dvec3 m_eye{0.0};
    glm::dvec3 m_direction{0.0};
    glm::dmat4 m_fromWorld{1.0};
    glm::dmat4 m_toWorld{1.0};
    double m_zNear = 0.0;
    double m_zFar = 0.0;
    double m_tanHalfFovy = 0.0;
    std::vector<glm::vec2> m_fence;
};
