#pragma once

#include <viewer/FrameRenderer.h>

#include <QtGui/QImage>

#include <functional>
#include <memory>

class QOpenGLFramebufferObject;

/// Draws one picture of a scene off screen, of any size, tile by tile, smoothed where the driver can. Bits
/// depend on the scene, the viewpoint and the size alone. The scene's bounds must be up to date.
class PicturePainter
{
public:
    /// The renderer is not owned.
    PicturePainter(FrameRenderer& renderer, const Viewpoint& viewpoint, const QSize& size,
                   const QColor& background);
    ~PicturePainter();
    PicturePainter(const PicturePainter&) = delete;
    PicturePainter& operator=(const PicturePainter&) = delete;

    const TileGrid& grid() const { return m_grid; }
    /// What is drawn over the pixels of each tile, given where in the picture they begin; nothing at first.
    using Overlay = std::function<void(QImage& tile, const QPoint& place)>;
    void setOverlay(Overlay overlay) { m_overlay = std::move(overlay); }
    /// Whether the background shows nothing of what a picture is laid over.
    bool isOpaque() const { return m_background.alpha() == 255; }
    /// The pixels of a tile of the grid: RGB32, or ARGB32 premultiplied where the background is not opaque.
    /// Throws ksp::CommonError when the driver cannot draw it. Leaves the caller's context current.
    QImage drawTile(const Tile& tile);
    /// All of the picture, for those that fit in memory; throws likewise.
    QImage drawAll();

private:
    FrameRenderer& m_renderer;
    Viewpoint m_viewpoint;
    QColor m_background;
    TileGrid m_grid;
    Overlay m_overlay;
    std::unique_ptr<QOpenGLFramebufferObject> m_target; // of the scene's context
};
