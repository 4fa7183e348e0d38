#include <viewer/window/View3dWidget.h>

#include <viewer/PicturePainter.h>
#include <viewer/window/Navigation.h>
#include <viewer/window/ViewTools.h>

#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>
#include <framework/ksp/Log.h>

#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QMouseEvent>

#include <cmath>

namespace {

constexpr double radiansPerPixel = 0.005;
constexpr double zoomPerStep = 0.85; // of a wheel
constexpr double unitsPerStep = 120.0;

QColor backgroundColor()
{
    const View3dSettings* settings = View3dSettings::getInstance();
    const QColor color = settings ? settings->getBackgroundColor() : QColor();
    return color.isValid() ? color : QColor(Qt::lightGray);
}

QStringList localFiles(const QMimeData& data)
{
    QStringList paths;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile()) paths.append(url.toLocalFile());
    return paths;
}

} // namespace

View3dWidget::View3dWidget(Scene3d& scene, QWidget* parent)
    : QOpenGLWidget(parent)
    , m_scene(&scene)
    , m_renderer(scene)
    , m_tools(new ViewTools(*this))
{
    QSurfaceFormat smooth = QSurfaceFormat::defaultFormat();
    smooth.setSamples(4);
    setFormat(smooth);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(160, 120);
    setMouseTracking(true); // tools follow the mouse without button
    connect(&scene, &Scene3d::updateView, this, [this] { update(); });
    connect(&scene, &Scene3d::modelToSceneTransformChanged, this, &View3dWidget::moveWithTransform);
}

View3dWidget::~View3dWidget()
{
    if (context()) disconnect(context(), nullptr, this, nullptr);
    releaseVertexArray();
}

// A vertex array object belongs to one context; a context that is replaced takes its own along.
void View3dWidget::releaseVertexArray()
{
    if (!m_vertexArray) return;
    makeCurrent();
    if (OpenGLFunctions* gl = currentGLFunctions()) gl->glDeleteVertexArrays(1, &m_vertexArray);
    m_vertexArray = 0;
    doneCurrent();
}

void View3dWidget::initializeGL()
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) {
        ksp::Log::error(QStringLiteral("The window has no OpenGL 4.3 core profile; it stays empty"));
        return;
    }
    Scene3d::initializeGLCommon(gl);
    gl->glGenVertexArrays(1, &m_vertexArray);
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &View3dWidget::releaseVertexArray,
            Qt::UniqueConnection);
}

void View3dWidget::paintGL()
{
    if (!m_vertexArray || !m_scene) return;
    m_scene->flushBounds(); // may move the camera
    m_renderer.drawFrame(m_viewpoint, deviceSize(), m_vertexArray, backgroundColor());
}

QSize View3dWidget::deviceSize() const
{
    return QSize(qRound(width() * devicePixelRatioF()), qRound(height() * devicePixelRatioF()));
}

glm::dvec2 View3dWidget::devicePixel(const QPointF& place) const
{
    return glm::dvec2(place.x(), place.y()) * devicePixelRatioF();
}

void View3dWidget::moveWithTransform(const glm::dmat4& additional)
{
    m_viewpoint = m_viewpoint.transformed(additional);
    m_grabbed = glm::dvec3(additional * glm::dvec4(m_grabbed, 1.0));
}

void View3dWidget::setViewpoint(const Viewpoint& viewpoint)
{
    m_viewpoint = viewpoint;
    Q_EMIT projectionTypeChanged(m_viewpoint.isParallel());
    update();
}

void View3dWidget::fitAll()
{
    if (!m_scene) return;
    m_scene->flushBounds();
    const IProjection::Projection type = m_viewpoint.projection().getType();
    m_viewpoint = Viewpoint::fitting(m_renderer.visibleBounds(), m_viewpoint.camera().getDirection(), type,
                                     deviceSize());
    update();
}

void View3dWidget::showFrom(StandardView view)
{
    if (!m_scene) return;
    m_scene->flushBounds();
    const IProjection::Projection type = m_viewpoint.projection().getType();
    m_viewpoint =
        Viewpoint::fitting(m_renderer.visibleBounds(), standardViewDirection(view), type, deviceSize());
    update();
}

void View3dWidget::setProjectionType(IProjection::Projection type)
{
    m_viewpoint.setProjectionType(type, deviceSize());
    Q_EMIT projectionTypeChanged(m_viewpoint.isParallel());
    update();
}

void View3dWidget::setEyeDomeShading(EyeDomeShading shading)
{
    m_renderer.setEyeDomeShading(shading);
    Q_EMIT eyeDomeShadingChanged(shading);
    update();
}

QImage View3dWidget::picture()
{
    if (!m_scene) return {};
    m_scene->flushBounds();
    return PicturePainter(m_renderer, m_viewpoint, deviceSize(), backgroundColor()).drawAll();
}

glm::dvec3 View3dWidget::pointAt(const QPointF& place)
{
    const glm::dvec2 pixel = devicePixel(place);
    if (!m_scene) return m_viewpoint.pointAt(pixel, 1.0, deviceSize());
    const QPoint whole(static_cast<int>(std::floor(pixel.x)), static_cast<int>(std::floor(pixel.y)));
    try {
        if (const auto point = m_renderer.pointUnder(m_viewpoint, deviceSize(), whole)) return *point;
    } catch (const ksp::CommonError& error) {
        ksp::Log::error(error.text());
    }
    const gmx::BoundingBox box = m_renderer.visibleBounds();
    const double depth = std::max(m_viewpoint.depthOf(box.getCenter()), box.getDiagonal() * 0.05);
    return m_viewpoint.pointAt(pixel, depth, deviceSize());
}

glm::dvec3 View3dWidget::pointAtDepth(const QPointF& place, double depth) const
{
    return m_viewpoint.pointAt(devicePixel(place), depth, deviceSize());
}

std::optional<QPointF> View3dWidget::placeOf(const glm::dvec3& point) const
{
    const auto pixel = m_viewpoint.pixelOf(point, deviceSize());
    if (!pixel) return std::nullopt;
    return QPointF(pixel->x, pixel->y) / devicePixelRatioF();
}

gmx::BoundingBox View3dWidget::visibleBounds() const
{
    return m_scene ? m_renderer.visibleBounds() : gmx::BoundingBox();
}

std::vector<LONGID> View3dWidget::select(const QPolygonF& area, SelectionOptions options) const
{
    if (!m_scene) return {};
    m_scene->flushBounds(); // may move the camera
    options.visibilityFilter = m_scene->getVisibilityFilter();
    QPolygonF pixels;
    for (const QPointF& place : area)
        pixels.append(place * devicePixelRatioF());
    const PaintContext context = m_renderer.paintContext(
        m_viewpoint, deviceSize(), QRect(QPoint(0, 0), deviceSize()), m_scene->getDefaultVao());
    return m_scene->selectItems(context, pixels, options);
}

void View3dWidget::mousePressEvent(QMouseEvent* event)
{
    if (m_tools->press(*event)) return;
    m_lastPlace = event->localPos();
    m_grabbed = pointAt(m_lastPlace);
}

void View3dWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (m_tools->move(*event)) return;
    const QPointF delta = event->localPos() - m_lastPlace;
    m_lastPlace = event->localPos();
    const bool isOrbit = event->buttons() == Qt::LeftButton && !(event->modifiers() & Qt::ShiftModifier);
    if (isOrbit)
        navigation::orbit(m_viewpoint, m_grabbed, -delta.x() * radiansPerPixel, -delta.y() * radiansPerPixel);
    else
        navigation::pan(m_viewpoint, devicePixel(delta), m_viewpoint.depthOf(m_grabbed), deviceSize());
    update();
}

void View3dWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (!m_tools->release(*event)) QOpenGLWidget::mouseReleaseEvent(event);
}

void View3dWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!m_tools->doubleClick(*event)) QOpenGLWidget::mouseDoubleClickEvent(event);
}

void View3dWidget::keyPressEvent(QKeyEvent* event)
{
    if (!m_tools->key(*event)) QOpenGLWidget::keyPressEvent(event);
}

void View3dWidget::wheelEvent(QWheelEvent* event)
{
    const double steps = event->angleDelta().y() / unitsPerStep;
    if (steps == 0.0) return;
    navigation::zoom(m_viewpoint, pointAt(event->position()), devicePixel(event->position()),
                     std::pow(zoomPerStep, steps), deviceSize());
    event->accept();
    update();
}

void View3dWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void View3dWidget::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    Q_EMIT filesDropped(localFiles(*event->mimeData()));
}
