#pragma once

#include <Viewer3dModule/scene/SelectionOptions.h>

#include <QtCore/QObject>
#include <QtGui/QPolygonF>

class ElementSelection;
class QAction;
class QMenu;
class View3dWidget;

/// The menu with the tools that select elements by an area of the view. With Shift what an area has is added
/// to the selection, with Ctrl it is taken out of it.
class SelectionMenu : public QObject
{
    Q_OBJECT
public:
    /// Fills the menu, which owns this. The others are not owned and outlive it.
    SelectionMenu(QMenu& menu, View3dWidget& view, ElementSelection& selection);

    /// What the switches of the menu say.
    SelectionOptions options() const;

Q_SIGNALS:
    /// A line for the status bar.
    void told(const QString& text);

private:
    void select(const QPolygonF& area, Qt::KeyboardModifiers modifiers);
    void tellCount();

    View3dWidget& m_view;
    ElementSelection& m_selection;
    QAction* m_visibleOnly;
    QAction* m_inside;
};
