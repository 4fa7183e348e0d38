#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/fences/fence_inner_box.h>
#include <framework/gmx/BoundingBox.h>

#include <glm/glm.hpp>

#include <optional>
#include <vector>

class Fence3DObject;

/// Frustums and prisms as what they have in common: a polygon that is swept along z of a frame.
struct SweptFence
{
    glm::dmat4 fromModel; ///< to that frame; for a frustum x and y are divided by tanHalfFovy
    const std::vector<glm::vec2>* polygon; ///< of the fence, closed; at depth 1 where lines of sight spread
    double zNear;
    double zFar;  ///< not above zNear: there is no end
    bool spreads; ///< along lines of sight from the origin, else in parallel
};
/// No value for a fence of another kind. Good until the fence changes.
VIEWER3DMODULE_EXPORT std::optional<SweptFence> sweptFence(const Fence3DObject& fence);

/// Where something lies.
enum class FenceSide {
    Inside,  ///< all of it
    Outside, ///< all of it
    Across   ///< both, or there is no telling
};

/// Tells of boxes whether all of what they hold lies on one side of a fence: what does needs no verdict for
/// each of its fragments. A box is across when it comes as near to the border as shaders may be off, which
/// calculate in floats.
class VIEWER3DMODULE_EXPORT FenceSides
{
public:
    /// Of a fence that is not empty, as it is now.
    /// @param innerBox, outerBox  of its polygon, see fenceInnerBox and fenceOuterBox; of a sphere unused
    FenceSides(const Fence3DObject& fence, const FenceBox& innerBox, const FenceBox& outerBox,
               const glm::dmat4& sceneToModel);

    /// Of a box in scene coordinates; one that is not valid is across.
    FenceSide sideOf(const gmx::BoundingBox& box) const;

private:
    struct Rect
    {
        glm::dvec2 low, high;
    };
    FenceSide sideOfSphere(const gmx::BoundingBox& box) const;
    FenceSide sideOfSweep(const gmx::BoundingBox& box) const;
    FenceSide sideOfPolygon(const Rect& rect, double offset) const;
    bool meetsAnEdge(const Rect& rect) const;

    // sphere, in the scene
    glm::dvec3 m_center{0.0};
    double m_radius = 0.0;
    // frustum and prism
    bool m_isSwept = false;
    glm::dmat4 m_fromScene{1.0};
    std::vector<glm::vec2> m_polygon; ///< empty where it has too many points to be looked at for each box
    FenceBox m_inner, m_outer;
    double m_zNear = 0.0, m_zFar = 0.0;
    bool m_spreads = false;
};
