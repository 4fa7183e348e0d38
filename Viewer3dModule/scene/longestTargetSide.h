#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

/// The longest side, in pixels, of a frame buffer of textures and render buffers that the current context can
/// make and draw to at once.
VIEWER3DMODULE_EXPORT int longestTargetSide(OpenGLFunctions& gl);
