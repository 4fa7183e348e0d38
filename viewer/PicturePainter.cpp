#include <viewer/PicturePainter.h>

#include <viewer/copyPixels.h>
#include <viewer/makeTarget.h>

#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>

namespace {

constexpr int smoothingSamples = 4;

void requireMemory(const QImage& image)
{
    if (image.isNull()) throw ksp::CommonError(QStringLiteral("there is no memory for the picture"));
}

} // namespace

PicturePainter::PicturePainter(FrameRenderer& renderer, const Viewpoint& viewpoint, const QSize& size,
                               const QColor& background)
    : m_renderer(renderer)
    , m_viewpoint(viewpoint)
    , m_background(background)
    , m_grid(size, renderer.reach())
{
}

PicturePainter::~PicturePainter()
{
    const CurrentContextGuard callers;
    m_renderer.scene().makeCurrent();
    m_target.reset();
}

QImage PicturePainter::drawTile(const Tile& tile)
{
    const CurrentContextGuard callers;
    OpenGLFunctions& gl = m_renderer.makeCurrent();
    // One for all tiles: drivers keep the memory of targets for a while after they are deleted.
    if (!m_target) m_target = makeTarget(gl, m_grid.largest(&Tile::target), smoothingSamples);
    m_target->bind();
    m_renderer.drawTile(m_viewpoint, m_grid.size(), tile, m_renderer.scene().getDefaultVao(), m_background);
    QImage image = m_target->toImage();
    m_target->release();
    const QPoint topLeft(0, image.height() - tile.target.height());
    if (image.size() != tile.pixels.size())
        image = image.copy(tile.pixels.translated(topLeft - tile.target.topLeft()));
    if (isOpaque()) image = std::move(image).convertToFormat(QImage::Format_RGB32);
    requireMemory(image);
    if (m_overlay) m_overlay(image, tile.pixels.topLeft());
    return image;
}

QImage PicturePainter::drawAll()
{
    QImage picture(m_grid.size(), isOpaque() ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
    requireMemory(picture);
    for (int band = 0; band < m_grid.bandCount(); ++band)
        for (const Tile& tile : m_grid.tiles(band))
            copyPixels(drawTile(tile), picture, tile.pixels.topLeft());
    return picture;
}
