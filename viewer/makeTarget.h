#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QSize>
#include <QtGui/QOpenGLFramebufferObject>

#include <memory>

/// A frame buffer of this size with colour and depth, bound, with so many samples a pixel or as many as the
/// driver can. Belongs to the current context. Throws ksp::CommonError when the driver cannot make it.
std::unique_ptr<QOpenGLFramebufferObject> makeTarget(OpenGLFunctions& gl, const QSize& size, int samples);
