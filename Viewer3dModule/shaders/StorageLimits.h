#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QString>

/// Shader storage in numbers: what a program uses, or the most that a driver offers. OpenGL 4.3 guarantees 8
/// bindings, 8 blocks in a fragment stage and none in a geometry stage.
struct StorageLimits
{
    int bindings = 0; ///< one more than the highest binding
    int fragmentBlocks = 0;
    int geometryBlocks = 0;
};

/// What the driver of the current context offers.
VIEWER3DMODULE_EXPORT StorageLimits storageOffered(OpenGLFunctions& gl);
/// What a linked program of the current context uses.
VIEWER3DMODULE_EXPORT StorageLimits storageUsed(OpenGLFunctions& gl, unsigned int program);
/// The first limit that is too low, in words; empty when all is there.
VIEWER3DMODULE_EXPORT QString missingStorage(const StorageLimits& used, const StorageLimits& offered);
