#pragma once

#include <framework/ksp/StagedProgress.h>

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QWidget>

#include <functional>

class QProgressBar;
class QLabel;

/// The progress of loading in the status bar, with a button to cancel it; hidden while nothing is loaded. The
/// window stays alive by handling events when the work reports, about twenty times a second at most.
class LoadingBar : public QWidget
{
    Q_OBJECT
public:
    explicit LoadingBar(QWidget* parent = nullptr);

    bool isRunning() const { return m_running; }
    /// Shows the bar, runs the work with a progress of its own and hides the bar, whatever the work throws.
    /// Nothing when work is running already.
    void run(const std::function<void(ksp::StagedProgress)>& work);

public Q_SLOTS:
    void cancel() { m_cancelled = true; }

private:
    void report(double percentage, const QString& title);

    QLabel* m_title;
    QProgressBar* m_bar;
    QElapsedTimer m_sinceEvents; // since events were handled last
    bool m_running = false;
    bool m_cancelled = false;
};
