#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <glm/glm.hpp>

class Fence3DObject;

/// Leaves out of a buffer of captured vertices the primitives of which no part lies in the fence; those that
/// straddle its border stay whole. What stays moves together and the buffer has room for just that; where
/// nothing stays it is deleted. The context of the buffer must be current.
/// @param buffer        homogeneous scene coordinates; 0: there is nothing to do
/// @param corners       of a primitive: 1 points, 2 lines, 3 triangles
/// @param sceneToModel  to the fence's frame
/// @return              the buffer, or 0
unsigned int leaveOutUnfenced(OpenGLFunctions& gl, unsigned int buffer, int corners,
                              const Fence3DObject& fence, const glm::dmat4& sceneToModel);
