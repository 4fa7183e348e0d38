#pragma once

#include "GlDebug.h"

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <gtest/gtest.h>

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <memory>

/// A test with a context of its own, current on an off-screen surface; `gl` is its function table, `vao` a
/// vertex array object of its. Any OpenGL error or message of the context fails the test.
class GlTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;
    bool makeCurrent() { return context.makeCurrent(&surface); }

    QOffscreenSurface surface;
    QOpenGLContext context;
    OpenGLFunctions* gl = nullptr;
    unsigned int vao = 0;
    std::unique_ptr<GlDebug> debug;
};
