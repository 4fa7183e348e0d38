#pragma once

#include <viewer/FenceShape.h>
#include <viewer/window/FenceNodeTool.h>

#include <Viewer3dModule/host/Fence3dDisplay.h>

#include <QtCore/QObject>
#include <QtGui/QPolygonF>

#include <optional>

class CProject;
class Scene3d;
class View3dWidget;

/// Makes and changes the project's fence as the user draws it in a view, and shows it there. While he is at
/// work what lies outside is grey; when he gives up, the fence is what it was before.
class FenceEditor : public QObject, public FenceNodeTool::Handles
{
    Q_OBJECT
public:
    /// None is owned; all outlive this.
    FenceEditor(View3dWidget& view, Scene3d& scene, CProject& project, QObject* parent = nullptr);

    /// What a polygon of the view holds, in model coordinates: from the camera that the view has, between the
    /// nearest and the farthest of what is visible. A frustum, or a prism where the projection is parallel;
    /// none for a polygon of fewer than 3 points.
    FenceShape sweptArea(const QPolygonF& places) const;
    /// A ball; scene units.
    FenceShape ball(const glm::dvec3& center, double radius) const;

    /// The fence while it is drawn: none shows what was there before.
    void preview(const FenceShape& shape);
    /// The drawn fence; none leaves what was there before.
    void accept(const FenceShape& shape);
    void giveUp();
    void remove();
    bool hasFence() const;

    std::vector<std::optional<QPointF>> places() const override;
    std::size_t moveNode(std::size_t node, const QPointF& place) override;
    void endMove(bool keep) override;

Q_SIGNALS:
    /// The fence is another one; not while it is drawn.
    void fenceChanged();

private:
    Fence3dItem& element() const;
    void begin();
    std::optional<glm::dvec3> pointOnLine(const std::pair<glm::dvec3, glm::dvec3>& line,
                                          const QPointF& place) const;

    View3dWidget& m_view;
    Scene3d& m_scene;
    CProject& m_project;
    Fence3dDisplay m_display;
    std::optional<FenceShape> m_before; // while the user is at work
};
