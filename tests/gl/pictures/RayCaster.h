#pragma once

#include <glm/glm.hpp>

#include <cmath>
#include <limits>
#include <vector>

/// A camera in model coordinates, in doubles, and its raster: what a depth map is checked against.
struct TestCamera
{
    glm::dvec3 eye;
    glm::dvec3 target;
    glm::dvec3 up;
    bool isParallel = false;
    double nearDistance = 1.0;
    double farDistance = 100.0;
    double pixel = 0.1; ///< of a parallel projection: model units a pixel
    int width = 96;
    int height = 72;
    double fov = 0.7853981633974483; ///< of a central projection, vertical, radians
};

struct Ray
{
    glm::dvec3 origin;
    glm::dvec3 direction; ///< its part along the camera's axis is 1, so that the parameter is the distance
};

/// The ray through a place of the raster: pixels, origin top left, centres at halves.
inline Ray rayThrough(const TestCamera& camera, double x, double y)
{
    const glm::dvec3 forward = glm::normalize(camera.target - camera.eye);
    const glm::dvec3 right = glm::normalize(glm::cross(forward, camera.up));
    const glm::dvec3 up = glm::cross(right, forward);
    const double across = x - camera.width / 2.0, upwards = camera.height / 2.0 - y;
    if (camera.isParallel) return {camera.eye + (right * across + up * upwards) * camera.pixel, forward};
    const double scale = std::tan(camera.fov / 2.0) / (camera.height / 2.0);
    return {camera.eye, forward + (right * across + up * upwards) * scale};
}

struct Hit
{
    int triangle = -1; ///< -1: nothing
    double distance = std::numeric_limits<double>::infinity();
};

/// Triangles that are cut with rays in doubles: each edge is a plane through the ray's origin.
class RayCaster
{
public:
    explicit RayCaster(const std::vector<glm::vec3>& corners, const glm::dvec3& origin)
    {
        for (const glm::vec3& corner : corners)
            m_corners.push_back(origin + glm::dvec3(corner));
    }

    /// The nearest triangle between the near and the far plane.
    Hit cast(const Ray& ray, double nearDistance, double farDistance) const
    {
        Hit best;
        for (std::size_t i = 0; i + 2 < m_corners.size(); i += 3) {
            const double distance = cut(ray, m_corners[i], m_corners[i + 1], m_corners[i + 2]);
            if (distance >= nearDistance && distance <= farDistance && distance < best.distance)
                best = {static_cast<int>(i / 3), distance};
        }
        return best;
    }

    std::size_t triangleCount() const { return m_corners.size() / 3; }

private:
    /// The ray's parameter at the triangle; NaN where it passes by.
    static double cut(const Ray& ray, const glm::dvec3& a, const glm::dvec3& b, const glm::dvec3& c)
    {
        const glm::dvec3 ab = b - a, ac = c - a, toA = ray.origin - a;
        const glm::dvec3 normal = glm::cross(ab, ac);
        const double slant = -glm::dot(normal, ray.direction);
        const glm::dvec3 turned = glm::cross(toA, ray.direction);
        const double shareB = glm::dot(ac, turned) / slant;
        const double shareC = -glm::dot(ab, turned) / slant;
        const bool isInside = shareB >= 0.0 && shareC >= 0.0 && shareB + shareC <= 1.0;
        return isInside ? glm::dot(normal, toA) / slant : std::numeric_limits<double>::quiet_NaN();
    }

    std::vector<glm::dvec3> m_corners;
};
