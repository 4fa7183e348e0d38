#include <Viewer3dModule/camera/CCamera.h>

#include <framework/gmx/math_utils.h>
#include <framework/ksp/IArchive.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

/// Single-precision epsilon: what a right angle or a horizontal part must exceed to count.
constexpr double epsilon = 1.1920928955078125e-7;
/// The elevation that a pitch step may not reach.
constexpr double elevationLimit = math_utils::pi / 2.0 - epsilon;

const glm::dvec3 vertical(0.0, 0.0, 1.0);

double horizontalLength(const glm::dvec3& direction)
{
    return std::sqrt(direction.x * direction.x + direction.y * direction.y);
}

/// The horizontal axis, to the right of the direction, about which a positive angle raises the direction.
glm::dvec3 pitchAxis(const glm::dvec3& direction)
{
    const double h = horizontalLength(direction);
    if (h > 0.0) {
        const glm::dvec3 axis(direction.y / h, -direction.x / h, 0.0);
        if (glm::length(axis) > 0.0) return axis;
    }
    return glm::dvec3(1.0, 0.0, 0.0);
}

/// Whether the direction may be raised by the step. False for a direction of length zero.
bool isPitchAllowed(const glm::dvec3& direction, double step)
{
    const double h = horizontalLength(direction);
    const double length = std::sqrt(direction.z * direction.z + h * h);
    const double elevation = std::asin(direction.z / length);
    const double raised = std::abs(elevation + step);
    return raised < elevationLimit || std::abs(elevation) > raised;
}

void serializeVector(ksp::IArchive& archive, glm::dvec3& v)
{
    static_assert(sizeof(glm::dvec3) == 24, "vectors are stored as blocks of three doubles");
    archive.block(&v, sizeof(v));
}

} // namespace

void CCamera::setPositionCamera(const glm::dvec3& position, const glm::dvec3& view, const glm::dvec3& up)
{
    m_position = position;
    m_view = view;
    m_up = up;
}

void CCamera::setDefaultCamera()
{
    // The tiny y belongs to the value: stored and compared cameras have it.
    setPositionCamera({0.0, 0.0, 1.5}, {0.0, 8.0, 1.5}, {0.0, 1e-9, 1.0});
}

glm::dvec3 CCamera::getDirection() const
{
    return glm::normalize(m_view - m_position);
}

glm::dvec3 CCamera::getLeftVector() const
{
    return glm::normalize(glm::cross(m_view - m_position, m_up));
}

glm::dvec3 CCamera::getUpVector() const
{
    const glm::dvec3 d = m_view - m_position;
    return glm::normalize(glm::cross(glm::cross(d, m_up), d));
}

glm::dmat4 CCamera::getViewMatrix() const
{
    // Scale x and y stay out on purpose: the scale exaggerates heights.
    return glm::scale(glm::lookAtRH(m_position, m_view, m_up), glm::dvec3(1.0, 1.0, m_scale.z));
}

void CCamera::moveStraight(double s)
{
    const glm::dvec3 step = s * getDirection();
    m_position += step;
    m_view += step;
}

void CCamera::zoomCamera(double s, const glm::dvec3& target)
{
    const glm::dvec3 step = s * glm::normalize(target - m_position);
    m_position += step;
    m_view += step;
}

void CCamera::moveAside(double s)
{
    const glm::dvec3 step = s * getLeftVector();
    m_position -= step;
    m_view -= step;
}

void CCamera::moveUp(double s)
{
    const glm::dvec3 step = s * getUpVector();
    m_position += step;
    m_view += step;
}

void CCamera::rotateCameraX(double a)
{
    RotateView(a, getDirection());
}

void CCamera::rotateCameraY(double a)
{
    RotateView(a, getLeftVector());
}

void CCamera::rotateCameraZ(double a)
{
    RotateView(a, getUpVector());
}

void CCamera::rotatePosition(double a)
{
    RotateView(a, vertical);
}

void CCamera::rotateOrbitCameraX(double a, const glm::dvec3& c)
{
    RotateViewOrbit(a, getDirection(), c);
}

void CCamera::rotateOrbitCameraY(double a, const glm::dvec3& c)
{
    RotateViewOrbit(a, getLeftVector(), c);
}

void CCamera::rotateOrbitCameraZ(double a, const glm::dvec3& c)
{
    RotateViewOrbit(a, getUpVector(), c);
}

void CCamera::strafeCamera(double a)
{
    const glm::dvec3 d = m_view - m_position;
    if (isPitchAllowed(d, a)) RotateView(a, pitchAxis(d));
}

void CCamera::rotateAroundCenter(double yaw, double pitch)
{
    m_position -= m_center;
    m_view -= m_center;
    const glm::dvec3 d = m_view - m_position;
    if (isPitchAllowed(d, pitch)) {
        const glm::dvec3 axis = pitchAxis(d);
        m_position = rotateAroundCenter(m_position, pitch, axis);
        m_view = rotateAroundCenter(m_view, pitch, axis);
    }
    if (std::abs(d.x) + std::abs(d.y) < epsilon) {
        // A vertical direction has no heading for the yaw to turn: give it one.
        m_position.x = m_position.y = 0.0;
        m_view.x = 0.0;
        m_view.y = 0.01;
    }
    m_position = rotateAroundCenter(m_position, yaw, vertical);
    m_view = rotateAroundCenter(m_view, yaw, vertical);
    m_position += m_center;
    m_view += m_center;
}

void CCamera::serialize(ksp::IArchive& archive)
{
    CCamera camera = *this; // what is read is taken over as a whole or not at all
    archive.beginObject();
    serializeVector(archive, camera.m_position);
    serializeVector(archive, camera.m_view);
    serializeVector(archive, camera.m_up);
    archive.value(camera.m_parameters[0]);
    archive.value(camera.m_parameters[1]);
    serializeVector(archive, camera.m_scale);
    serializeVector(archive, camera.m_center);
    archive.value(camera.m_camSpeed);
    archive.value(camera.m_rotateSpeed);
    archive.endObject(1);
    archive.finish();
    *this = camera;
}

void CCamera::RotateView(double a, const glm::dvec3& axis)
{
    m_view = m_position + rotateAroundCenter(m_view - m_position, a, axis);
    m_up = glm::normalize(rotateAroundCenter(m_up, a, axis));
}

void CCamera::RotateViewOrbit(double a, const glm::dvec3& axis, const glm::dvec3& center)
{
    if (glm::any(glm::isnan(center))) return;
    const glm::dvec3 position = rotateAroundCenter(m_position - center, a, axis) + center;
    const glm::dvec3 view = position + rotateAroundCenter(m_view - m_position, a, axis);
    setPositionCamera(position, view, glm::normalize(rotateAroundCenter(m_up, a, axis)));
}

glm::dvec3 CCamera::rotateAroundCenter(const glm::dvec3& v, double a, const glm::dvec3& axis)
{
    const glm::dmat4 rotation = glm::rotate(glm::dmat4(1.0), a, glm::normalize(axis));
    return glm::dvec3(rotation * glm::dvec4(v, 0.0));
}
