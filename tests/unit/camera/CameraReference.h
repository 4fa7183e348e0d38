#pragma once

#include <Viewer3dModule/camera/CCamera.h>

#include <array>
#include <cmath>
#include <random>

/// Camera arithmetic written out on plain arrays, to compare CCamera with.
namespace reference {

using Vector = std::array<double, 3>;

constexpr double pitchLimit = 1.5707963267948966 - 1.1920928955078125e-7;

inline Vector plus(const Vector& a, const Vector& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline Vector minus(const Vector& a, const Vector& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline Vector times(double k, const Vector& a)
{
    return {k * a[0], k * a[1], k * a[2]};
}

inline double dot(const Vector& a, const Vector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vector cross(const Vector& a, const Vector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline Vector unit(const Vector& a)
{
    return times(1.0 / std::sqrt(dot(a, a)), a);
}

/// v turned by the angle about the axis, by Rodrigues' formula.
inline Vector turned(const Vector& v, double angle, const Vector& axis)
{
    const Vector k = unit(axis);
    return plus(plus(times(std::cos(angle), v), times(std::sin(angle), cross(k, v))),
                times(dot(k, v) * (1.0 - std::cos(angle)), k));
}

inline Vector fromGlm(const glm::dvec3& v)
{
    return {v.x, v.y, v.z};
}

inline glm::dvec3 toGlm(const Vector& v)
{
    return {v[0], v[1], v[2]};
}

/// What a camera's motions change, and the centre.
struct Camera
{
    Vector position;
    Vector view;
    Vector up;
    Vector center;

    Vector direction() const { return minus(view, position); }
    Vector left() const { return unit(cross(direction(), up)); }
    Vector upright() const { return unit(cross(cross(direction(), up), direction())); }

    void move(const Vector& step)
    {
        position = plus(position, step);
        view = plus(view, step);
    }
    void rotate(double angle, const Vector& axis)
    {
        view = plus(position, turned(direction(), angle, axis));
        up = unit(turned(up, angle, axis));
    }
    void orbit(double angle, const Vector& axis, const Vector& c)
    {
        const Vector difference = turned(direction(), angle, axis);
        position = plus(turned(minus(position, c), angle, axis), c);
        view = plus(position, difference);
        up = unit(turned(up, angle, axis));
    }

    double elevation() const
    {
        const Vector d = direction();
        return std::asin(d[2] / std::sqrt(dot(d, d)));
    }
    bool allowsPitch(double step) const
    {
        const double e = elevation();
        return std::abs(e + step) < pitchLimit || std::abs(e) > std::abs(e + step);
    }
    /// For a direction that is not vertical.
    Vector pitchAxis() const
    {
        const Vector d = direction();
        const double h = std::hypot(d[0], d[1]);
        return {d[1] / h, -d[0] / h, 0.0};
    }
};

inline Camera of(const CCamera& camera)
{
    return {fromGlm(camera.getPosition()), fromGlm(camera.getView()), fromGlm(camera.getUp()),
            fromGlm(camera.getCenter())};
}

/// Cameras with coordinates up to 100, a direction of length 1 to 50 and an up vector that is at least some
/// 10 degrees off the direction; the same ones in every run.
class RandomCameras
{
public:
    double number(double from, double to)
    {
        return std::uniform_real_distribution<double>(from, to)(m_random);
    }
    Vector point(double size) { return {number(-size, size), number(-size, size), number(-size, size)}; }

    Vector direction()
    {
        for (;;) {
            const Vector v = point(1.0);
            const double squared = dot(v, v);
            if (squared > 0.01 && squared < 1.0) return unit(v);
        }
    }

    CCamera next()
    {
        const Vector position = point(100.0);
        const Vector towards = direction();
        Vector up = direction();
        while (std::abs(dot(up, towards)) > 0.98)
            up = direction();
        CCamera camera(number(-100.0, 100.0), number(-100.0, 100.0), number(-100.0, 100.0));
        camera.setPositionCamera(toGlm(position), toGlm(plus(position, times(number(1.0, 50.0), towards))),
                                 toGlm(times(number(0.5, 2.0), up)));
        return camera;
    }

private:
    std::mt19937 m_random{20240607};
};

} // namespace reference
