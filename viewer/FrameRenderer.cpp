#include <viewer/FrameRenderer.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>

#include <QtGui/QOpenGLFramebufferObject>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

const char* const viewName = "Main";
constexpr int smoothingSamples = 4;
constexpr double smoothedPixels = 16.0e6; // larger pictures would take too much memory for samples
constexpr int pickReach = 4;              // pixels

std::unique_ptr<QOpenGLFramebufferObject> makeTarget(OpenGLFunctions& gl, const QSize& size, int samples)
{
    GLint largest = 0, mostSamples = 0;
    gl.glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
    gl.glGetIntegerv(GL_MAX_SAMPLES, &mostSamples);
    if (size.width() > largest || size.height() > largest)
        throw ksp::CommonError(
            QStringLiteral("this driver draws pictures of at most %1 x %1 pixels").arg(largest));
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
    format.setSamples(std::min(samples, mostSamples));
    auto target = std::make_unique<QOpenGLFramebufferObject>(size, format);
    if (!target->isValid() || !target->bind())
        throw ksp::CommonError(QStringLiteral("the driver has no memory for a picture of %1 x %2 pixels")
                                   .arg(size.width())
                                   .arg(size.height()));
    return target;
}

OpenGLFunctions& functionsOf(Scene3d& scene)
{
    OpenGLFunctions* gl = scene.makeCurrent() ? scene.getGLFunctions() : nullptr;
    if (!gl) throw ksp::CommonError(QStringLiteral("there is no OpenGL 4.3 core profile here"));
    return *gl;
}

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

} // namespace

FrameRenderer::FrameRenderer(Scene3d& scene)
    : m_scene(scene)
{
    QObject::connect(&scene, &Scene3d::updateView, &m_listener, [this] { m_keptBounds.reset(); });
}

gmx::BoundingBox FrameRenderer::visibleBounds() const
{
    gmx::BoundingBox box;
    for (const auto& entry : m_scene.getItems())
        if (entry.second->isVisible()) box.unite(entry.second->sceneBoundingBox());
    return box.isValid() ? box : m_scene.getBounds();
}

// The scene's own bounds are compared because its signal may still be on the way.
const gmx::BoundingBox& FrameRenderer::keptBounds() const
{
    const gmx::BoundingBox now = m_scene.getBounds();
    const std::size_t items = m_scene.getItems().size();
    if (!m_keptBounds || m_keptFor != now || m_keptItems != items) {
        m_keptBounds = visibleBounds();
        m_keptFor = now;
        m_keptItems = items;
    }
    return *m_keptBounds;
}

glm::dmat4 FrameRenderer::projectionMatrix(const Viewpoint& viewpoint, const QSize& size) const
{
    const View3dSettings* settings = View3dSettings::getInstance();
    return viewpoint.projectionMatrix(keptBounds(), size, settings ? settings->getNearPlaneDist() : 1.0);
}

PaintContext FrameRenderer::paintContext(const Viewpoint& viewpoint, const QSize& size,
                                         unsigned int vertexArray) const
{
    PaintContext context;
    context.view = glm::mat4(viewpoint.camera().getViewMatrix());
    context.projection = glm::mat4(projectionMatrix(viewpoint, size));
    context.setViewport(QRect(QPoint(0, 0), size));
    context.vertexArray = vertexArray;
    context.scene = &m_scene;
    context.viewName = viewName;
    return context;
}

void FrameRenderer::drawFrame(const Viewpoint& viewpoint, const QSize& size, unsigned int vertexArray,
                              const QColor& background)
{
    OpenGLFunctions* gl = m_scene.getGLFunctions();
    if (!gl) return;
    const auto channel = [&](qreal value) { return static_cast<float>(value * background.alphaF()); };
    gl->glViewport(0, 0, size.width(), size.height());
    gl->glClearColor(channel(background.redF()), channel(background.greenF()), channel(background.blueF()),
                     channel(1.0));
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    m_scene.drawFrame(paintContext(viewpoint, size, vertexArray), m_scene.getVisibilityFilter(), {});
}

QImage FrameRenderer::picture(const Viewpoint& viewpoint, const QSize& size, const QColor& background)
{
    const CurrentContextGuard callers;
    OpenGLFunctions& gl = functionsOf(m_scene);
    const double pixels = static_cast<double>(size.width()) * size.height();
    const auto target = makeTarget(gl, size, pixels > smoothedPixels ? 0 : smoothingSamples);
    drawFrame(viewpoint, size, m_scene.getDefaultVao(), background);
    const QImage image = target->toImage();
    target->release();
    if (image.isNull()) throw ksp::CommonError(QStringLiteral("there is no memory for the picture"));
    return background.alpha() == 255 ? image.convertToFormat(QImage::Format_RGB32) : image;
}

std::optional<glm::dvec3> FrameRenderer::pointUnder(const Viewpoint& viewpoint, const QSize& size,
                                                    const QPoint& pixel)
{
    const CurrentContextGuard callers;
    m_scene.flushBounds();
    OpenGLFunctions& gl = functionsOf(m_scene);
    constexpr int side = 2 * pickReach + 1;
    const QSize cutout(side, side);
    const auto target = makeTarget(gl, cutout, 0);

    // The projection that fills the small target with the pixels around the wanted one.
    const glm::dvec3 scale(static_cast<double>(size.width()) / side,
                           static_cast<double>(size.height()) / side, 1.0);
    const glm::dvec3 middle(2.0 * (pixel.x() + 0.5) / size.width() - 1.0,
                            1.0 - 2.0 * (pixel.y() + 0.5) / size.height(), 0.0);
    const glm::dmat4 projection = glm::scale(glm::dmat4(1.0), scale) *
                                  glm::translate(glm::dmat4(1.0), -middle) *
                                  projectionMatrix(viewpoint, size);
    PaintContext context = paintContext(viewpoint, cutout, m_scene.getDefaultVao());
    context.projection = glm::mat4(projection);
    gl.glViewport(0, 0, side, side);
    gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    m_scene.drawFrame(context, m_scene.getVisibilityFilter(), {});

    std::vector<float> depths(side * side, 1.0f);
    gl.glReadPixels(0, 0, side, side, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    target->release();
    const int found = nearestDrawn(depths, side);
    if (found < 0) return std::nullopt;
    const glm::dvec4 place(2.0 * (found % side + 0.5) / side - 1.0, 2.0 * (found / side + 0.5) / side - 1.0,
                           Scene3d::depthValueToFrustumZ(depths[static_cast<std::size_t>(found)]), 1.0);
    const glm::dvec4 eye = glm::inverse(projection) * place;
    const glm::dvec4 point = glm::inverse(viewpoint.camera().getViewMatrix()) * (eye / eye.w);
    return std::isfinite(point.x + point.y + point.z) ? std::optional<glm::dvec3>(point) : std::nullopt;
}
