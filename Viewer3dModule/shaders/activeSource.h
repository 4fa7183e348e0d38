#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QByteArray>

/// What of a shader source its compiler has to look at: comments are left out, and what lies in branches of
/// #ifdef and #ifndef that are not taken, as far as the source itself tells which names are defined. All
/// other conditions, and those on names of the driver (GL_..., __...), stay with all of their branches. Lines
/// keep their numbers, so that messages about one are good for the other. Drivers read sources several times.
VIEWER3DMODULE_EXPORT QByteArray activeSource(const QByteArray& source);
