#include <viewer/cli/ProgressBar.h>

#include <viewer/UnfinishedFiles.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <optional>

#include <unistd.h>

namespace {

volatile std::sig_atomic_t interrupted = 0;
volatile std::sig_atomic_t endsAtOnce = 0;
volatile std::sig_atomic_t isDrawn = 0;
constexpr char wiping[] =
    "\r                                                                               \r";

template <std::size_t Size>
void print(const char (&text)[Size])
{
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, Size - 1);
}

void onInterrupt(int)
{
    if (endsAtOnce || interrupted) { // only what is safe in a signal's handler
        UnfinishedFiles::deleteAll();
        if (isDrawn) print(wiping);
        print("viewer3d: cancelled\n");
        _exit(1);
    }
    interrupted = 1;
}

} // namespace

struct ProgressBar::Private
{
    bool isShown = isatty(STDERR_FILENO) == 1;
    void (*formerHandler)(int) = SIG_DFL;
    std::optional<ksp::StagedProgress> progress;

    void report(double percentage, const QString& title)
    {
        if (interrupted) progress->cancel();
        if (!isShown) return;
        constexpr int width = 30;
        const int filled = static_cast<int>(percentage / 100.0 * width);
        const QByteArray bar = QByteArray(filled, '#') + QByteArray(width - filled, '.');
        const QByteArray name = title.left(40).toLocal8Bit();
        std::fprintf(stderr, "\r[%s] %3.0f %%  %-40s", bar.constData(), percentage, name.constData());
        std::fflush(stderr);
        isDrawn = 1;
    }
};

ProgressBar::ProgressBar()
    : m_private(std::make_unique<Private>())
{
    interrupted = 0;
    m_private->formerHandler = std::signal(SIGINT, onInterrupt);
    Private* d = m_private.get();
    d->progress.emplace([d](double percentage, const QString& title) { d->report(percentage, title); });
}

ProgressBar::~ProgressBar()
{
    wipe();
    std::signal(SIGINT, m_private->formerHandler == SIG_ERR ? SIG_DFL : m_private->formerHandler);
}

ksp::StagedProgress ProgressBar::progress() const
{
    return *m_private->progress;
}

void ProgressBar::throwIfInterrupted() const
{
    if (interrupted) m_private->progress->cancel();
    m_private->progress->throwIfCanceled();
}

ProgressBar::ImmediateEnd::ImmediateEnd(ProgressBar& bar)
{
    bar.throwIfInterrupted();
    endsAtOnce = 1;
}

ProgressBar::ImmediateEnd::~ImmediateEnd()
{
    endsAtOnce = 0;
}

void ProgressBar::wipe()
{
    if (!isDrawn) return;
    print(wiping);
    isDrawn = 0;
}
