#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtGui/QOpenGLFunctions_4_3_Core>

/// The OpenGL 4.3 core function table of a context.
using OpenGLFunctions = QOpenGLFunctions_4_3_Core;

/// The function table of the context that is current on the calling thread; null when none is current or when
/// it offers no 4.3 core profile. Cheap: the table of a context is looked up once in the context's life.
VIEWER3DMODULE_EXPORT OpenGLFunctions* currentGLFunctions();
