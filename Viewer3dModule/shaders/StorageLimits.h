#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// Shader storage in numbers: what the stages of a program declare, or the most that a driver offers. OpenGL
/// 4.3 guarantees 8 bindings, 8 blocks in a fragment stage and none in a geometry stage.
struct StorageLimits
{
    int bindings = 0; ///< one more than the highest binding
    int fragmentBlocks = 0;
    int geometryBlocks = 0;
};

/// What the driver of the current context offers.
VIEWER3DMODULE_EXPORT StorageLimits storageOffered(OpenGLFunctions& gl);

/// What a stage declares: read out of its source before any compiler sees it, because drivers differ in when
/// they refuse what they do not have (some at the binding, some at the link, some not at all) and in what
/// they say then. Needs no context.
///
/// Conditions on names (#ifdef, #ifndef, #else) are followed as activeSource does; of any other condition all
/// branches count.
/// Blocks in the bodies of macros do not count, nor do bindings that are not plain numbers: of these the
/// driver has to speak itself. An array of blocks counts as one.
/// @param source  with its includes and defines in place, see preprocessShader
/// @param stage   GL_FRAGMENT_SHADER, GL_GEOMETRY_SHADER, ...; in other stages than these two no blocks are
///                counted, only bindings
VIEWER3DMODULE_EXPORT StorageLimits storageDeclared(const QString& source, unsigned int stage);
/// The same of what activeSource gives.
StorageLimits storageDeclaredActively(const QByteArray& source, unsigned int stage);
/// What two stages of a program need together.
VIEWER3DMODULE_EXPORT StorageLimits storageOfBoth(const StorageLimits& one, const StorageLimits& other);

/// The first limit that is too low, in words; empty when all is there.
VIEWER3DMODULE_EXPORT QString missingStorage(const StorageLimits& needed, const StorageLimits& offered);
