#pragma once

#include <viewer/EyeDomePass.h>
#include <viewer/TileGrid.h>
#include <viewer/Viewpoint.h>

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/ViewCulling.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QSize>
#include <QtGui/QColor>

#include <optional>

class Scene3d;

/// Draws frames of a scene: the one way from a viewpoint to pixels, for windows and for pictures alike.
class FrameRenderer
{
public:
    /// The scene is not owned.
    explicit FrameRenderer(Scene3d& scene);

    FrameRenderer(const FrameRenderer&) = delete;
    FrameRenderer& operator=(const FrameRenderer&) = delete;

    /// The box of what is visible, scene coordinates, as small as it really is; the scene's bounds where
    /// nothing is.
    gmx::BoundingBox visibleBounds() const;
    /// Eye-dome lighting of the frames from now on; off at first.
    void setEyeDomeShading(EyeDomeShading shading) { m_shading = shading; }
    EyeDomeShading eyeDomeShading() const { return m_shading; }
    /// Whether items that a frame, or a tile of it, does not show are left out of it; they are at first. The
    /// picture is the same.
    void setCulling(bool enabled) { m_culling.setEnabled(enabled); }
    /// How many pixels beside a pixel its colour depends on: the reach of the tiles.
    int reach() const { return m_shading == EyeDomeShading::Off ? 0 : EyeDomePass::reach; }
    /// The projection of a picture of this size. Its near and far planes enclose all that is visible, so that
    /// every part of the picture has the same. The scene's bounds must be up to date.
    glm::dmat4 projectionMatrix(const Viewpoint& viewpoint, const QSize& size) const;
    /// The record of an ordinary pass over a part of a picture of this size (pixels), to a viewport of the
    /// part's size. The scene's bounds must be up to date.
    PaintContext paintContext(const Viewpoint& viewpoint, const QSize& size, const QRect& part,
                              unsigned int vertexArray) const;
    /// Clears the bound target and draws the tile of a frame of this size to its lower left corner; the
    /// target is at least as large as the tile's. A context of the scene's share group is current, with
    /// Scene3d::initializeGLCommon's state, and the vertex array is one of its own. With eye-dome lighting
    /// the target is one that EyeDomePass takes.
    void drawTile(const Viewpoint& viewpoint, const QSize& size, const Tile& tile, unsigned int vertexArray,
                  const QColor& background);
    /// The same with all of a frame in one pass.
    void drawFrame(const Viewpoint& viewpoint, const QSize& size, unsigned int vertexArray,
                   const QColor& background);

    /// The scene that is drawn.
    Scene3d& scene() const { return m_scene; }
    /// Makes the scene's context current. Throws ksp::CommonError where it has no OpenGL 4.3.
    OpenGLFunctions& makeCurrent() const;
    /// The drawn point, scene coordinates, under the pixel (origin top left) of a view of this size, or next
    /// to it; nothing where only background is. What lies in the scene's foreground, or outside of its fence
    /// and is shown in grey, is looked through. Leaves the caller's context current.
    std::optional<glm::dvec3> pointUnder(const Viewpoint& viewpoint, const QSize& size, const QPoint& pixel);

private:
    /// drawTile without what comes after the frame. Of passes that are depthOnly only the depths are of use.
    void drawPlain(const Viewpoint& viewpoint, const QSize& size, const Tile& tile, unsigned int vertexArray,
                   const QColor& background, bool depthOnly);

    Scene3d& m_scene;
    ViewCulling m_culling;
    EyeDomePass m_eyeDome;
    EyeDomeShading m_shading = EyeDomeShading::Off;
};
