// The scene's pictures: drawn off screen, in the scene's own context.

#include <Viewer3dModule/camera/ParallelProjection.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/scene/ViewCulling.h>
#include <Viewer3dModule/scene/longestTargetSide.h>
#include <framework/ksp/Log.h>

#include <QtCore/QRectF>
#include <QtGui/QImage>
#include <QtGui/QOpenGLFramebufferObject>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// What drawing a picture changes in a context, put back at the end.
class PassState
{
public:
    explicit PassState(OpenGLFunctions& gl)
        : m_gl(gl)
    {
        gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_drawTarget);
        gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_readTarget);
        gl.glGetIntegerv(GL_VIEWPORT, m_viewport);
        gl.glGetFloatv(GL_COLOR_CLEAR_VALUE, m_clearColor);
        gl.glGetDoublev(GL_DEPTH_CLEAR_VALUE, &m_clearDepth);
    }
    ~PassState()
    {
        m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_drawTarget));
        m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_readTarget));
        m_gl.glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
        m_gl.glClearColor(m_clearColor[0], m_clearColor[1], m_clearColor[2], m_clearColor[3]);
        m_gl.glClearDepth(m_clearDepth);
    }
    PassState(const PassState&) = delete;
    PassState& operator=(const PassState&) = delete;

private:
    OpenGLFunctions& m_gl;
    GLint m_drawTarget = 0;
    GLint m_readTarget = 0;
    GLint m_viewport[4] = {0, 0, 0, 0};
    GLfloat m_clearColor[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    GLdouble m_clearDepth = 1.0;
};

bool canDraw(OpenGLFunctions& gl, const QSize& size, int count)
{
    const int side = longestTargetSide(gl);
    if (size.width() > side || size.height() > side) {
        ksp::Log::error(QStringLiteral("A picture of %1 x %2 pixels is not drawn: this driver draws at most "
                                       "%3 x %3 pixels")
                            .arg(size.width())
                            .arg(size.height())
                            .arg(side));
        return false;
    }
    GLint attachments = 0, drawBuffers = 0;
    gl.glGetIntegerv(GL_MAX_COLOR_ATTACHMENTS, &attachments);
    gl.glGetIntegerv(GL_MAX_DRAW_BUFFERS, &drawBuffers);
    if (count > std::min(attachments, drawBuffers)) {
        ksp::Log::error(QStringLiteral("%1 pictures at once are not drawn: this driver draws at most %2")
                            .arg(count)
                            .arg(std::min(attachments, drawBuffers)));
        return false;
    }
    return true;
}

/// Binds and clears the target, with all its colour attachments as draw buffers.
void beginPicture(OpenGLFunctions& gl, QOpenGLFramebufferObject& target, int count)
{
    target.bind();
    gl.glViewport(0, 0, target.width(), target.height());
    // Named before the clear, which reaches draw buffers only.
    std::vector<GLenum> attachments(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < attachments.size(); ++i)
        attachments[i] = GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(i);
    gl.glDrawBuffers(count, attachments.data());
    gl.glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    gl.glClearDepth(1.0);
    gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

/// A colour attachment of the bound frame buffer; null without memory for it.
QImage readAttachment(OpenGLFunctions& gl, const QSize& size, int attachment)
{
    QImage image(size, QImage::Format_ARGB32);
    if (image.isNull()) return image;
    gl.glReadBuffer(GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(attachment));
    gl.glReadPixels(0, 0, size.width(), size.height(), GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, image.bits());
    gl.glReadBuffer(GL_COLOR_ATTACHMENT0);
    return std::move(image).mirrored();
}

// --- the view from above

constexpr double enlargedSide = 800.0; // pixels

/// The box with the rectangle's limits in x and y; a box that holds nothing lies at z = 0.
gmx::BoundingBox withRectangle(const gmx::BoundingBox& box, const QRectF& rect)
{
    const double low = box.isNull() ? 0.0 : box.getMin().z;
    const double high = box.isNull() ? 0.0 : box.getMax().z;
    return gmx::BoundingBox(glm::dvec3(rect.left(), rect.top(), low),
                            glm::dvec3(rect.right(), rect.bottom(), high));
}

QSize topViewSize(const glm::dvec3& extent)
{
    const double longer = std::max(extent.x, extent.y);
    const double factor = longer > 0.0 ? std::max(1.0, enlargedSide / longer) : 1.0;
    const auto pixels = [factor](double length) {
        constexpr double most = std::numeric_limits<int>::max();
        return static_cast<int>(std::clamp(std::round(length * factor), 1.0, most));
    };
    return QSize(pixels(extent.x), pixels(extent.y));
}

/// Looks straight down onto the middle of a box, coordinates of the model.
struct TopView
{
    glm::dmat4 view; // the eye is half the box's diagonal above its middle
    glm::dmat4 projection;
};

/// @param reach  beyond the box, so that rounding cuts off nothing at its top and bottom; above 0
TopView topView(const gmx::BoundingBox& box, const QSize& size, double reach)
{
    const double diagonal = box.getDiagonal();
    ParallelProjection projection;
    const glm::dvec3 extent = box.getSize();
    const double pixel = std::max(extent.x / size.width(), extent.y / size.height());
    if (diagonal > std::numeric_limits<double>::epsilon() && pixel > 0.0) projection.setZoom(pixel);
    const glm::dvec3 eye = box.getCenter() + glm::dvec3(0.0, 0.0, diagonal / 2.0);
    return {glm::translate(glm::dmat4(1.0), -eye),
            projection.calcProjectionMatrix(QSizeF(size), diagonal + reach, -reach)};
}

} // namespace

std::vector<QImage> Scene3d::createItemsImages(std::function<void()> draw, const PaintContext& context,
                                               int count)
{
    const QSize size = context.viewportRect.size();
    if (size.isEmpty() || count < 1) return {};
    const CurrentContextGuard callers;
    OpenGLFunctions* gl = makeCurrent() ? getGLFunctions() : nullptr;
    if (!gl || !canDraw(*gl, size, count)) return {};

    const PassState before(*gl);
    QOpenGLFramebufferObject target(size, QOpenGLFramebufferObject::Depth);
    for (int i = 1; i < count; ++i)
        target.addColorAttachment(size);
    if (!target.isValid()) {
        ksp::Log::error(QStringLiteral("A picture of %1 x %2 pixels is not drawn: the driver has no memory "
                                       "for it")
                            .arg(size.width())
                            .arg(size.height()));
        return {};
    }
    beginPicture(*gl, target, count);
    if (draw) draw();
    target.bind(); // whatever draw left bound
    std::vector<QImage> images;
    for (int i = 0; i < count; ++i) {
        QImage image = readAttachment(*gl, size, i);
        if (!image.isNull()) images.push_back(std::move(image));
    }
    target.release();
    return images;
}

QImage Scene3d::createItemsImage(std::function<void()> draw, const PaintContext& context)
{
    const std::vector<QImage> images = createItemsImages(std::move(draw), context, 1);
    return images.empty() ? QImage() : images.front();
}

QImage Scene3d::createItemsImage(const std::vector<Graphics3dItem*>& items, const PaintContext& context)
{
    PaintContext pass = context;
    pass.scene = this;
    pass.vertexArray = m_defaultVao; // one of another context would be no name here
    const std::unordered_set<const Drawable3dItem*> chosen(items.begin(), items.end());
    const ViewCulling culling(*this);
    const auto drawChosen = [&](bool highlighted) {
        const auto isWanted = [&chosen, highlighted](Drawable3dItem* item) {
            return item && chosen.count(item) != 0 && item->isHighlighted() == highlighted;
        };
        drawElements(pass, nullptr, culling.filter(pass, isWanted));
    };
    const auto draw = [&] {
        drawChosen(false);
        // From here on only highlighted items hide one another.
        if (OpenGLFunctions* gl = getGLFunctions()) gl->glClear(GL_DEPTH_BUFFER_BIT);
        drawChosen(true);
    };
    return createItemsImage(draw, pass);
}

QImage Scene3d::createItemsImage(const std::vector<Graphics3dItem*>& items, const QRectF& modelRect,
                                 const QRect& imageRect, const IElementFilter* filter)
{
    const CurrentContextGuard callers;
    flushBounds(); // the boxes and the transform must belong together
    makeCurrent();
    gmx::BoundingBox box;
    for (const Graphics3dItem* item : items)
        if (item) box.unite(item->sceneBoundingBox());
    const glm::dmat4 sceneToModel = sceneToModelTransform();
    box = box.transformed(sceneToModel);
    if (modelRect.isValid()) box = withRectangle(box, modelRect);
    const QSize size = imageRect.isValid() ? imageRect.size() : topViewSize(box.getSize());
    // A hundredth of a scene unit is more than scene coordinates and depths are rounded by.
    const TopView top = topView(box, size, 0.01 * glm::length(glm::dvec3(sceneToModel[2])));

    PaintContext context;
    context.setViewport(QRect(QPoint(0, 0), size));
    context.projection = glm::mat4(top.projection);
    // The frame is in model units and what is drawn in scene units. Large model coordinates meet and cancel
    // here, in doubles.
    context.view = glm::mat4(top.view * sceneToModel);
    context.vertexArray = m_defaultVao;
    context.scene = this;
    context.extra2 = const_cast<IElementFilter*>(filter);
    return createItemsImage(items, context);
}
