#pragma once

#include <framework/ksp/Log.h>

#include <QtWidgets/QDockWidget>

class QPlainTextEdit;

/// The one place where errors and warnings show: the log's last lines. Opens itself when an error comes.
class MessageDock : public QDockWidget
{
    Q_OBJECT
public:
    explicit MessageDock(QWidget* parent = nullptr);
    ~MessageDock() override;

    /// Shows a line that the log had before this was there. From any thread.
    void add(ksp::Log::MessageType type, const QString& text);

    QString text() const;

private:
    QPlainTextEdit* m_lines;
    int m_handler;
};
