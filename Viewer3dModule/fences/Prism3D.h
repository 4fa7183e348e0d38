#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <memory>
#include <vector>

namespace gmx {
class IFence3D;
}
namespace ksp {
class CQtArchive;
}

/// A polygon swept along a straight direction over a height. In model coordinates, here called the world, in
/// double precision and the project's length unit; needs no OpenGL context.
///
/// In the prism frame the origin, the mean of the polygon's points, lies at 0 and the direction along +z; the
/// polygon is what x and y of its points are there, and the prism reaches from z = 0, its base, to the
/// height, its top. With a height of 0 or less it has no top and goes on for ever.
class VIEWER3DMODULE_EXPORT Prism3D
{
public:
    /// Sets the prism from a polygon in the world, with the arguments of a frustum's fence; the first and the
    /// third have no meaning here.
    /// @param direction    the sweep's direction, of any length above 0 whose square a double can hold
    /// @param zNear, zFar  their difference is the height; the base lies at the points' mean whatever they
    /// are
    /// @param points       the polygon, closed: more than 3 points, the last exactly the first. It need not
    /// be
    ///                     flat: its points are taken along the direction
    /// The prism is empty afterwards, its other fields as before, when the polygon is open or of 3 points or
    /// fewer, or when a number is not finite or the direction's length 0.
    void setFence(const glm::dvec3& eye, const glm::dvec3& direction, double tanHalfFovy, double zNear,
                  double zFar, std::vector<glm::dvec3> points);
    /// Removes the polygon; all else stays.
    void reset();

    /// The rigid motion that carries the origin to 0 and the direction, of any length, onto +z: a turn about
    /// z into the plane y = 0 after the translation, then one about y. Along -z it turns by pi about y; a
    /// direction of length 0 is not turned.
    static glm::dmat4 lookAt(const glm::dvec3& origin, const glm::dvec3& direction);

    /// World to prism frame.
    const glm::dmat4& matrix() const { return m_matrix; }
    /// The depth of the base in the prism frame: 0.
    double zNear() const { return 0.0; }
    /// The height.
    double zFar() const { return m_height; }
    /// 0, the angle of view of parallel lines of sight.
    double tanHalfFovy() const { return 0.0; }
    /// The polygon, closed, in x and y of the prism frame.
    const std::vector<glm::vec2>& fence() const { return m_fence; }
    /// Whether there is no polygon.
    bool empty() const { return m_fence.empty(); }

    /// Reads or writes origin, direction, height and polygon. Throws ksp::CFileException when the archive's
    /// bytes do not hold a prism; this one is unchanged then. Refused are also numbers that are not finite, a
    /// polygon that is open or of fewer than 4 points, and one with a direction that is not of unit length.
    void serialize(ksp::CQtArchive& archive);
    /// Whether the world point lies in the prism: on the base, on the top or between them (without top: on
    /// the base or beyond), and in the polygon, of whose edges the left and lower ones are inside. False for
    /// a point with a NaN and for an empty prism.
    bool contains(const glm::dvec3& point) const;
    /// As for the fences of the view: see Fence3DObject::reaches.
    bool reaches(const std::vector<glm::dvec3>& corners) const;
    /// As for the fences of the view: see Fence3DObject::getIFence3D.
    std::shared_ptr<gmx::IFence3D> getIFence3D(const glm::dmat4& modelToScene) const;

    /// The polygon at the base and at the height, in the world.
    std::vector<glm::dvec3> getNearFence() const;
    std::vector<glm::dvec3> getFarFence() const;
    /// The handles of base and top: the polygon's centre at z = 0 and at the height, in the world; none
    /// without a polygon.
    std::vector<glm::dvec3> getNodes() const;
    /// The line along which the handles move: from the first to the second, longer at both ends by 4 times
    /// the polygon's radius; along the direction where the handles coincide. None where there are no handles.
    std::vector<glm::dvec3> getRay() const;
    /// Moves base or top by the way from its handle to the world point; sideways too, so take points of
    /// getRay(). The base carries the polygon along. What passes the other trades places with it, and the
    /// height is how far apart the two are then. The base of a prism without top moves alone: the prism stays
    /// without. Nothing moves without handles or to where numbers are not finite.
    void movePlane(const glm::dvec3& point, bool nearPlane);

    /// The mean of the points of a closed polygon, the last left out; (0, 0) for fewer than 4 points.
    static glm::dvec2 getFenceCenter2D(const std::vector<glm::vec2>& fence);
    /// The largest distance of a point from that centre; 0 for fewer than 4 points.
    static double getFenceRadius2D(const std::vector<glm::vec2>& fence);

private:
    bool isWhole() const;
    void updateMatrix();
    std::vector<glm::dvec3> getFence(double height) const;

    glm::dvec3 m_origin{0.0};
    glm::dvec3 m_direction{0.0};
    glm::dmat4 m_matrix{1.0};
    double m_height = 0.0;
    std::vector<glm::vec2> m_fence;
};
