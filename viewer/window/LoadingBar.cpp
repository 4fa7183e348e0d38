#include <viewer/window/LoadingBar.h>

#include <QtCore/QCoreApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>

namespace {

constexpr qint64 pause = 50; // milliseconds between two looks at events; each may draw the view anew

} // namespace

LoadingBar::LoadingBar(QWidget* parent)
    : QWidget(parent)
    , m_title(new QLabel(this))
    , m_bar(new QProgressBar(this))
{
    auto* button = new QPushButton(tr("Cancel"), this);
    button->setObjectName(QStringLiteral("cancelLoading"));
    connect(button, &QPushButton::clicked, this, &LoadingBar::cancel);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_title);
    layout->addWidget(m_bar);
    layout->addWidget(button);
    m_bar->setRange(0, 1000);
    hide();
}

void LoadingBar::run(const std::function<void(ksp::StagedProgress)>& work)
{
    if (m_running) return;
    struct Running
    {
        LoadingBar& bar;
        explicit Running(LoadingBar& b)
            : bar(b)
        {
            bar.m_running = true;
            bar.m_cancelled = false;
            bar.m_bar->setValue(0);
            bar.m_sinceEvents.invalidate();
            bar.show();
        }
        ~Running()
        {
            bar.m_running = false;
            bar.hide();
        }
    };
    const Running running(*this);
    // The sink cancels the progress that reports to it; it knows it by a handle that is set right after.
    const auto handle = std::make_shared<std::unique_ptr<ksp::StagedProgress>>();
    ksp::StagedProgress progress(
        [this, weak = std::weak_ptr(handle)](double percentage, const QString& title) {
            report(percentage, title);
            const auto own = weak.lock();
            if (m_cancelled && own && *own) (*own)->cancel();
        });
    *handle = std::make_unique<ksp::StagedProgress>(progress);
    work(progress);
}

void LoadingBar::report(double percentage, const QString& title)
{
    if (m_sinceEvents.isValid() && m_sinceEvents.elapsed() < pause) return;
    m_title->setText(title);
    m_bar->setValue(static_cast<int>(percentage * 10.0));
    QCoreApplication::processEvents();
    m_sinceEvents.start();
}
