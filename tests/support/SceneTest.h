#pragma once

#include "GlDebug.h"
#include "RenderTarget.h"

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <gtest/gtest.h>

#include <memory>

/// A test with a scene over an empty project model; the scene's context is current. Any OpenGL error or
/// message of the context fails the test.
class SceneTest : public ::testing::Test
{
protected:
    SceneTest();
    ~SceneTest() override;
    void SetUp() override;
    void TearDown() override;

    /// A context for a target of this size, with identity matrices: scene coordinates are normalised device
    /// coordinates.
    PaintContext paintContext(int width, int height);
    /// Draws a frame (all visible items) into a fresh target over opaque black and gives the picture.
    QImage drawFrame(const PaintContext& context);

    std::unique_ptr<class CProject> project;
    std::unique_ptr<Scene3d> scene;
    std::unique_ptr<GlDebug> debug;
    OpenGLFunctions* gl = nullptr;
};
