#pragma once

#include <QtCore/QObject>
#include <QtGui/QPolygonF>

/// What the left mouse button and some keys do in a view while a tool is chosen. Places are logical pixels of
/// the view, origin top left.
class ViewTool : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~ViewTool() override;

    /// The button goes down. False: not here, the view does what it does without tool; drag and release do
    /// not follow then.
    virtual bool press(const QPointF& place, Qt::KeyboardModifiers modifiers) = 0;
    virtual void drag(const QPointF& place);
    virtual void release(const QPointF& place, Qt::KeyboardModifiers modifiers);
    /// The mouse moves without button.
    virtual void hover(const QPointF& place);
    /// A double click, after the press and release of its first click, or Enter.
    virtual void finish(Qt::KeyboardModifiers modifiers);
    /// Backspace.
    virtual void stepBack();
    /// Ends what was begun, as if it had not been. False where nothing was.
    virtual bool cancel();
    /// The outline of what is being drawn, to be shown over the view; without points at other times.
    virtual QPolygonF sketch() const;

Q_SIGNALS:
    /// The sketch is another one.
    void changed();
};
