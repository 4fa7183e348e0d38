#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <vector>

/// A box in the plane of a fence's polygon; its low corner lies above the high one where it is empty.
struct FenceBox
{
    glm::vec2 low{1.0f};
    glm::vec2 high{-1.0f};
};

/// A large box that lies in the polygon as a whole, away from all of its edges: what is in it need not be
/// held against each of them. Not the largest; empty where there is none of some size.
VIEWER3DMODULE_EXPORT FenceBox fenceInnerBox(const std::vector<glm::vec2>& polygon);
/// The box about the polygon.
VIEWER3DMODULE_EXPORT FenceBox fenceOuterBox(const std::vector<glm::vec2>& polygon);
