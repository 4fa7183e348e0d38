#include <viewer/window/MessageDock.h>

#include <framework/ksp/Log.h>

#include <QtCore/QPointer>
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
    // Lines may come from any thread and while a frame is drawn: they are shown from the event loop.
    m_handler = ksp::Log::addHandler(
        [dock = QPointer<MessageDock>(this)](ksp::Log::MessageType type, const QString& text) {
            if (!dock || type == ksp::Log::Debug) return;
            QMetaObject::invokeMethod(
                dock.data(),
                [dock, type, text] {
                    dock->m_lines->appendPlainText(text);
                    if (type == ksp::Log::Error) dock->show();
                },
                Qt::QueuedConnection);
        });
}

MessageDock::~MessageDock()
{
    ksp::Log::removeHandler(m_handler);
}

QString MessageDock::text() const
{
    return m_lines->toPlainText();
}
