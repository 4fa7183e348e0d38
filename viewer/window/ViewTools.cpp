#include <viewer/window/ViewTools.h>

#include <QtCore/QEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QWidget>

/// Lies over the view, as large as it, and shows the outline that the tool draws. A widget of its own, so
/// that moving the mouse draws no frame.
class ViewTools::Overlay : public QWidget
{
public:
    explicit Overlay(QWidget& view)
        : QWidget(&view)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
        resize(view.size());
        view.installEventFilter(this);
        hide();
    }
    void show(const QPolygonF& sketch)
    {
        m_sketch = sketch;
        setVisible(!sketch.isEmpty());
        update();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Resize) resize(static_cast<QWidget*>(watched)->size());
        return false;
    }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(QColor(255, 130, 0, 40));
        painter.setPen(QPen(Qt::white, 3.0));
        painter.drawPolygon(m_sketch, Qt::OddEvenFill);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(200, 80, 0), 1.0));
        painter.drawPolygon(m_sketch, Qt::OddEvenFill);
    }

private:
    QPolygonF m_sketch;
};

ViewTools::ViewTools(QWidget& view)
    : QObject(&view)
    , m_overlay(new Overlay(view))
{
}

void ViewTools::setTool(ViewTool* tool)
{
    if (tool == m_tool) return;
    if (m_tool) {
        m_tool->cancel();
        m_tool->disconnect(this);
    }
    m_tool = tool;
    m_holder = nullptr;
    m_overlay->show({});
    if (tool) connect(tool, &ViewTool::changed, this, [this, tool] { m_overlay->show(tool->sketch()); });
    Q_EMIT toolChanged(tool);
}

bool ViewTools::press(const QMouseEvent& event)
{
    if (m_holder) return true; // another button meanwhile
    ViewTool* const wanted = m_tool ? m_tool : m_idleTool;
    if (event.button() != Qt::LeftButton || !wanted) return false;
    if (!wanted->press(event.localPos(), event.modifiers())) return false;
    m_holder = wanted;
    return true;
}

bool ViewTools::move(const QMouseEvent& event)
{
    if (m_holder)
        m_holder->drag(event.localPos());
    else if (m_tool && event.buttons() == Qt::NoButton)
        m_tool->hover(event.localPos());
    return m_holder || event.buttons() == Qt::NoButton;
}

bool ViewTools::release(const QMouseEvent& event)
{
    if (!m_holder || event.button() != Qt::LeftButton) return m_holder;
    ViewTool* const holder = m_holder;
    m_holder = nullptr;
    holder->release(event.localPos(), event.modifiers());
    return true;
}

bool ViewTools::doubleClick(const QMouseEvent& event)
{
    if (!m_tool || event.button() != Qt::LeftButton) return false;
    m_tool->finish(event.modifiers());
    return true;
}

bool ViewTools::key(const QKeyEvent& event)
{
    if (event.key() == Qt::Key_Escape) {
        ViewTool* const working = m_holder ? m_holder : m_tool;
        m_holder = nullptr;
        if (working && !working->cancel() && working == m_tool) setTool(nullptr);
        return working;
    }
    if (!m_tool || m_holder) return false;
    if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter)
        m_tool->finish(event.modifiers());
    else if (event.key() == Qt::Key_Backspace)
        m_tool->stepBack();
    else
        return false;
    return true;
}
