#pragma once

#include <viewer/window/ViewTool.h>

#include <optional>
#include <vector>

/// Drags the node points of a fence. Takes the mouse only where one of them is.
class FenceNodeTool : public ViewTool
{
    Q_OBJECT
public:
    /// Who has the nodes.
    class Handles
    {
    public:
        virtual ~Handles() = default;
        /// Where the nodes are seen, by their numbers; none for those that are not.
        virtual std::vector<std::optional<QPointF>> places() const = 0;
        /// A node follows the mouse. Returns its number from then on.
        virtual std::size_t moveNode(std::size_t node, const QPointF& place) = 0;
        /// Moving has ended; what was moved stays, or goes back.
        virtual void endMove(bool keep) = 0;
    };
    /// Not owned.
    explicit FenceNodeTool(Handles& handles, QObject* parent = nullptr);

    bool press(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    void drag(const QPointF& place) override;
    void release(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    bool cancel() override;

private:
    Handles& m_handles;
    std::optional<std::size_t> m_node; // that is dragged
    bool m_isMoved = false;
};
