#pragma once

#include <viewer/window/ViewTool.h>

#include <glm/glm.hpp>

#include <functional>
#include <optional>

/// Draws a ball: press on its centre, drag as far as its radius.
class SphereTool : public ViewTool
{
    Q_OBJECT
public:
    /// The point of the scene that shows at a place.
    using Pick = std::function<glm::dvec3(const QPointF& place)>;
    /// How far a place is from a point of the scene, across the line of sight.
    using Distance = std::function<double(const glm::dvec3& from, const QPointF& place)>;

    SphereTool(Pick pick, Distance distance, QObject* parent = nullptr);

    bool press(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    void drag(const QPointF& place) override;
    void release(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    bool cancel() override;

Q_SIGNALS:
    /// The ball that is being drawn, and that is drawn; scene units, the radius above 0.
    void sphereChanged(const glm::dvec3& center, double radius);
    void sphereChosen(const glm::dvec3& center, double radius);
    /// It was given up, or has no size.
    void sphereCancelled();

private:
    Pick m_pick;
    Distance m_distance;
    std::optional<glm::dvec3> m_center; // while the button is down
};
