#pragma once

#include <viewer/FrameRenderer.h>
#include <viewer/Viewpoint.h>

#include <Viewer3dModule/scene/SelectionOptions.h>
#include <framework/ksp/LONGID.h>

#include <QtCore/QPointer>
#include <QtGui/QPolygonF>
#include <QtWidgets/QOpenGLWidget>

class Scene3d;
class ViewTools;

/// A view of a scene: draws it and turns mouse and keyboard into motions of its camera.
///
/// Left drag orbits about the point under the cursor, middle or right drag and shift + left drag pan, the
/// wheel zooms to the cursor. A tool that is chosen has the left button for itself (tools()). Its context
/// shares objects with the scene's, but has a vertex array object of its own.
class View3dWidget : public QOpenGLWidget
{
    Q_OBJECT
public:
    /// The scene is not owned. Once it is gone the view shows nothing and stays as it is.
    explicit View3dWidget(Scene3d& scene, QWidget* parent = nullptr);
    ~View3dWidget() override;

    /// Scene coordinates.
    const Viewpoint& viewpoint() const { return m_viewpoint; }
    void setViewpoint(const Viewpoint& viewpoint);
    /// Shows everything from the direction that the camera has.
    void fitAll();
    /// Shows everything from there.
    void showFrom(StandardView view);
    void setProjectionType(IProjection::Projection type);
    EyeDomeShading eyeDomeShading() const { return m_renderer.eyeDomeShading(); }
    void setEyeDomeShading(EyeDomeShading shading);
    /// What the view shows now, in its own resolution.
    QImage picture();
    /// The drawn point under a place of the widget (logical pixels), scene coordinates; where nothing is
    /// drawn a point at the depth of the middle of what is visible.
    glm::dvec3 pointAt(const QPointF& place);
    /// The point under a place at a distance from the eye along the line of sight, scene coordinates.
    glm::dvec3 pointAtDepth(const QPointF& place, double depth) const;
    /// Where a point of the scene is seen, in the view or beyond it; none behind the eye.
    std::optional<QPointF> placeOf(const glm::dvec3& point) const;
    /// The box of what is visible, scene coordinates.
    gmx::BoundingBox visibleBounds() const;
    /// The elements in an area of the view, whose points are logical pixels, as Scene3d::selectItems finds
    /// them; of the options the filters are the view's own.
    std::vector<LONGID> select(const QPolygonF& area, SelectionOptions options) const;
    /// What has the left button instead of the camera.
    ViewTools& tools() const { return *m_tools; }

Q_SIGNALS:
    /// Files were dropped on the view.
    void filesDropped(const QStringList& paths);
    void projectionTypeChanged(bool isParallel);
    void eyeDomeShadingChanged(EyeDomeShading shading);

protected:
    void initializeGL() override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    /// Size of the target, device pixels.
    QSize deviceSize() const;
    glm::dvec2 devicePixel(const QPointF& place) const;
    void releaseVertexArray();
    void moveWithTransform(const glm::dmat4& additional);

    QPointer<Scene3d> m_scene;
    FrameRenderer m_renderer; // only while the scene is there
    Viewpoint m_viewpoint;
    unsigned int m_vertexArray = 0;
    ViewTools* m_tools;
    QPointF m_lastPlace;       // of the drag, logical pixels
    glm::dvec3 m_grabbed{0.0}; // scene coordinates
};
