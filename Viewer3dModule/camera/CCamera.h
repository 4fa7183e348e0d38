#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <array>

namespace ksp {
class IArchive;
}

/// The viewpoint of a 3D view: an eye, a point looked at, an up vector, an orbit centre, a vertical
/// exaggeration and two speed factors, with the motions that a view drives from mouse and keyboard.
///
/// A plain value in double precision. Points and distances are in scene units, angles in radians; a rotation
/// by a positive angle follows the right-hand rule. "The direction" is view - position. Needs no OpenGL
/// context.
///
/// A new camera has its three vectors at zero and no direction: call setDefaultCamera() or
/// setPositionCamera() before asking for a direction, a matrix or a motion, which all give NaN otherwise. The
/// same holds for a camera that looks along its up vector, except for the direction itself and the motions
/// along it.
class VIEWER3DMODULE_EXPORT CCamera
{
public:
    /// Orbit centre at the origin.
    CCamera()
        : CCamera(0.0, 0.0, 0.0)
    {
    }
    /// (x, y, z) is the orbit centre.
    CCamera(double x, double y, double z)
        : m_center(x, y, z)
    {
    }

    /// The eye.
    glm::dvec3 getPosition() const { return m_position; }
    /// The point looked at.
    glm::dvec3 getView() const { return m_view; }
    /// The up vector as it was given or turned; in general neither of unit length nor at a right angle to the
    /// direction, see getUpVector().
    glm::dvec3 getUp() const { return m_up; }

    /// The point that rotateAroundCenter() turns about.
    glm::dvec3 getCenter() const { return m_center; }
    void setCenter(const glm::dvec3& center) { m_center = center; }
    /// Per-axis scale; only z, the vertical exaggeration, enters the view matrix.
    glm::dvec3 getScale() const { return m_scale; }
    void setScale(const glm::dvec3& scale) { m_scale = scale; }

    /// Factors for whoever turns input into motion; the camera itself does not use them.
    double getCamSpeed() const { return m_camSpeed; }
    double getRotateSpeed() const { return m_rotateSpeed; }
    /// Multiply the factor, without bounds: after a multiplication by 0 it stays 0.
    void multCamSpeed(double k) { m_camSpeed *= k; }
    void multRotateSpeed(double k) { m_rotateSpeed *= k; }

    /// Stores the vectors as they are given.
    void setPositionCamera(const glm::dvec3& position, const glm::dvec3& view, const glm::dvec3& up);
    /// Eye 1.5 above the origin, looking level along +y. Scale, centre and speeds stay.
    void setDefaultCamera();

    /// The direction, of unit length.
    glm::dvec3 getDirection() const;
    /// The same as getDirection().
    glm::dvec3 getStraightVector() const { return getDirection(); }
    /// normalize(direction x up). With z up this points to the viewer's right, whatever the name says:
    /// moveAside() subtracts it.
    glm::dvec3 getLeftVector() const;
    /// The up vector at a right angle to the direction, of unit length.
    glm::dvec3 getUpVector() const;
    /// World to eye, right-handed, looking along -z: look-at matrix times diag(1, 1, scale.z, 1).
    glm::dmat4 getViewMatrix() const;

    /// Moves eye and point looked at along the direction.
    void moveStraight(double s);
    /// The same as moveStraight().
    void zoomCamera(double s) { moveStraight(s); }
    /// Moves both points along the line from the eye to the target, which must not be the eye; the direction
    /// stays.
    void zoomCamera(double s, const glm::dvec3& target);
    /// Moves both points to the viewer's left.
    void moveAside(double s);
    /// Moves both points along getUpVector().
    void moveUp(double s);

    /// Roll: turns about the direction, through the eye.
    void rotateCameraX(double a);
    /// Turns about getLeftVector(), through the eye.
    void rotateCameraY(double a);
    /// Turns about getUpVector(), through the eye.
    void rotateCameraZ(double a);
    /// Turns about the world's vertical, through the eye.
    void rotatePosition(double a);

    /// Turns about the direction, through c. These three do nothing when a component of c is NaN.
    void rotateOrbitCameraX(double a, const glm::dvec3& c);
    /// Turns about getLeftVector(), through c.
    void rotateOrbitCameraY(double a, const glm::dvec3& c);
    /// Turns about getUpVector(), through c.
    void rotateOrbitCameraZ(double a, const glm::dvec3& c);

    /// Raises (a > 0) or lowers the direction about the horizontal through the eye. A step that would bring
    /// it to the vertical or beyond is refused as a whole; one that brings it nearer to the level never is.
    void strafeCamera(double a);
    /// Orbits about the centre: by pitch about the horizontal at a right angle to the direction, with the
    /// limit of strafeCamera(), then by yaw about the world's vertical. The up vector stays. A direction that
    /// is vertical gets a small part along y first, and both points come onto the vertical through the
    /// centre.
    void rotateAroundCenter(double yaw, double pitch);

    /// Reads or writes all fields. Throws ksp::CFileException when the archive's bytes do not hold a camera;
    /// this one is unchanged then.
    void serialize(ksp::IArchive& archive);

private:
    void RotateView(double a, const glm::dvec3& axis);
    void RotateViewOrbit(double a, const glm::dvec3& axis, const glm::dvec3& center);
    static glm::dvec3 rotateAroundCenter(const glm::dvec3& v, double a, const glm::dvec3& axis);

    glm::dvec3 m_position{0.0};
    glm::dvec3 m_view{0.0};
    glm::dvec3 m_up{0.0};
    std::array<double, 2> m_parameters{100.0, 100.0}; // kept for the host, in memory and in archives
    glm::dvec3 m_scale{1.0};
    glm::dvec3 m_center;
    double m_camSpeed = 1.0;
    double m_rotateSpeed = 0.05;
};
