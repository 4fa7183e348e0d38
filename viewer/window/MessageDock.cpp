#include <viewer/window/MessageDock.h>

#include <viewer/printable.h>

#include <QtWidgets/QPlainTextEdit>

namespace {

constexpr int keptLines = 200;

} // namespace

MessageDock::MessageDock(QWidget* parent)
    : QDockWidget(tr("Messages"), parent)
    , m_lines(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("messages"));
    m_lines->setReadOnly(true);
    m_lines->setMaximumBlockCount(keptLines);
    setWidget(m_lines);
    hide();
    m_handler =
        ksp::Log::addHandler([this](ksp::Log::MessageType type, const QString& text) { add(type, text); });
}

MessageDock::~MessageDock()
{
    ksp::Log::removeHandler(m_handler);
}

// Lines may come from any thread and while a frame is drawn: they are shown from the event loop.
void MessageDock::add(ksp::Log::MessageType type, const QString& text)
{
    if (type == ksp::Log::Debug) return;
    QMetaObject::invokeMethod(
        this,
        [this, type, text] {
            m_lines->appendPlainText(printable(text));
            if (type == ksp::Log::Error) show();
        },
        Qt::QueuedConnection);
}

QString MessageDock::text() const
{
    return m_lines->toPlainText();
}
