#include <viewer/FrameRenderer.h>

#include <viewer/elements/LabelDrawer.h>
#include <viewer/makeTarget.h>

#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>

#include <QtGui/QOpenGLFramebufferObject>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

const char* const viewName = "Main";
constexpr int pickReach = 4; // pixels
// How far balls and symbols that are so many pixels large stand out of the box of their places, pixels.
constexpr double symbolReach = 16.0;

/// The pixel of a square of depths that something was drawn to, nearest to the square's middle; -1 without
/// one.
int nearestDrawn(const std::vector<float>& depths, int side)
{
    int best = -1, bestDistance = side * side;
    for (int i = 0; i < side * side; ++i) {
        const int dx = i % side - side / 2, dy = i / side - side / 2;
        const int distance = dx * dx + dy * dy;
        if (depths[static_cast<std::size_t>(i)] < 1.0f && distance < bestDistance) {
            best = i;
            bestDistance = distance;
        }
    }
    return best;
}

/// The box with room for what is so many pixels large at any place in it.
gmx::BoundingBox withSymbols(const gmx::BoundingBox& box, const Viewpoint& viewpoint, const QSize& size)
{
    if (!box.isValid()) return box;
    const double farthest = viewpoint.depthOf(box.getCenter()) + box.getDiagonal() / 2.0;
    const glm::dvec3 reach(symbolReach * viewpoint.unitsPerPixel(std::max(farthest, 0.0), size));
    return gmx::BoundingBox(box.getMin() - reach, box.getMax() + reach);
}

/// For as long as it lives what is drawn covers as much of a picture as its alpha says, and what is opaque
/// stays so: colours are then those of a picture with premultiplied alpha, as which the target is read.
class PictureBlending
{
public:
    explicit PictureBlending(OpenGLFunctions& gl)
        : m_gl(gl)
    {
        m_gl.glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    }
    ~PictureBlending() { m_gl.glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA); }
    PictureBlending(const PictureBlending&) = delete;
    PictureBlending& operator=(const PictureBlending&) = delete;

private:
    OpenGLFunctions& m_gl;
};

} // namespace

FrameRenderer::FrameRenderer(Scene3d& scene)
    : m_scene(scene)
    , m_culling(scene)
    , m_eyeDome(scene)
{
}

gmx::BoundingBox FrameRenderer::visibleBounds() const
{
    const gmx::BoundingBox box = m_scene.visibleBounds();
    return box.isValid() ? box : m_scene.getBounds();
}

glm::dmat4 FrameRenderer::projectionMatrix(const Viewpoint& viewpoint, const QSize& size) const
{
    const View3dSettings* settings = View3dSettings::getInstance();
    return viewpoint.projectionMatrix(withSymbols(visibleBounds(), viewpoint, size), size,
                                      settings ? settings->getNearPlaneDist() : 1.0);
}

PaintContext FrameRenderer::paintContext(const Viewpoint& viewpoint, const QSize& size, const QRect& part,
                                         unsigned int vertexArray) const
{
    PaintContext context;
    context.view = glm::mat4(viewpoint.camera().getViewMatrix());
    context.projection = glm::mat4(croppedProjection(projectionMatrix(viewpoint, size), size, part));
    context.setViewport(QRect(QPoint(0, 0), part.size()));
    context.vertexArray = vertexArray;
    context.scene = &m_scene;
    context.blends = true;
    context.offsetsFills = true;
    context.viewName = viewName;
    return context;
}

void FrameRenderer::drawTile(const Viewpoint& viewpoint, const QSize& size, const Tile& tile,
                             unsigned int vertexArray, const QColor& background)
{
    OpenGLFunctions* gl = m_scene.getGLFunctions();
    if (!gl) return;
    const PictureBlending blending(*gl);
    drawPlain(viewpoint, size, tile, vertexArray, background, false);
    const glm::dmat4 projection = projectionMatrix(viewpoint, size);
    if (m_shading != EyeDomeShading::Off)
        m_eyeDome.apply(m_shading, tile.target.size(), croppedProjection(projection, size, tile.target),
                        vertexArray);
    if (LabelDrawer* labels = LabelDrawer::find(m_scene))
        labels->write(paintContext(viewpoint, size, tile.frustum, vertexArray),
                      projection * viewpoint.camera().getViewMatrix(), size, tile.frustum.topLeft());
}

void FrameRenderer::drawPlain(const Viewpoint& viewpoint, const QSize& size, const Tile& tile,
                              unsigned int vertexArray, const QColor& background, bool depthOnly)
{
    OpenGLFunctions* gl = m_scene.getGLFunctions();
    if (!gl) return;
    const auto channel = [&](qreal value) { return static_cast<float>(value * background.alphaF()); };
    // where the frustum lies about the target, whose origin is its lower left corner
    gl->glViewport(tile.frustum.left() - tile.target.left(), tile.target.bottom() - tile.frustum.bottom(),
                   tile.frustum.width(), tile.frustum.height());
    gl->glClearColor(channel(background.redF()), channel(background.greenF()), channel(background.blueF()),
                     channel(1.0));
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    PaintContext pass = paintContext(viewpoint, size, tile.frustum, vertexArray);
    pass.depthOnly = depthOnly;
    m_scene.drawFrame(pass, m_scene.getVisibilityFilter(), m_culling.filter(pass));
}

void FrameRenderer::drawFrame(const Viewpoint& viewpoint, const QSize& size, unsigned int vertexArray,
                              const QColor& background)
{
    const QRect all(QPoint(0, 0), size);
    drawTile(viewpoint, size, {all, all, all}, vertexArray, background);
}

OpenGLFunctions& FrameRenderer::makeCurrent() const
{
    OpenGLFunctions* gl = m_scene.makeCurrent() ? m_scene.getGLFunctions() : nullptr;
    if (!gl) throw ksp::CommonError(QStringLiteral("there is no OpenGL 4.3 core profile here"));
    return *gl;
}

std::optional<glm::dvec3> FrameRenderer::pointUnder(const Viewpoint& viewpoint, const QSize& size,
                                                    const QPoint& pixel)
{
    const CurrentContextGuard callers;
    m_scene.flushBounds();
    OpenGLFunctions& gl = makeCurrent();
    constexpr int side = 2 * pickReach + 1;
    const QRect cutout(pixel.x() - pickReach, pixel.y() - pickReach, side, side);
    const Tile tile = TileGrid::around(cutout, size);
    if (tile.frustum.isEmpty()) return std::nullopt;
    const auto target = makeTarget(gl, cutout.size(), 0);
    drawPlain(viewpoint, size, tile, m_scene.getDefaultVao(), Qt::black, true);

    std::vector<float> depths(side * side, 1.0f);
    gl.glReadPixels(0, 0, side, side, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    target->release();
    const int found = nearestDrawn(depths, side);
    if (found < 0) return std::nullopt;
    const glm::dvec4 place(2.0 * (found % side + 0.5) / side - 1.0, 2.0 * (found / side + 0.5) / side - 1.0,
                           Scene3d::depthValueToFrustumZ(depths[static_cast<std::size_t>(found)]), 1.0);
    const glm::dvec4 eye =
        glm::inverse(croppedProjection(projectionMatrix(viewpoint, size), size, cutout)) * place;
    const glm::dvec4 point = glm::inverse(viewpoint.camera().getViewMatrix()) * (eye / eye.w);
    return std::isfinite(point.x + point.y + point.z) ? std::optional<glm::dvec3>(point) : std::nullopt;
}
