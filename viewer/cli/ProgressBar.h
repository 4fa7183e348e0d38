#pragma once

#include <framework/ksp/StagedProgress.h>

#include <memory>

/// Progress of a command: a bar on standard error where that is a terminal, nothing elsewhere. Ctrl-C cancels
/// the progress; a second one ends the program at once, with nothing half-written left. One object at a time.
class ProgressBar
{
public:
    ProgressBar();
    /// Wipes the bar and gives Ctrl-C its old meaning back.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    ksp::StagedProgress progress() const;
    /// Throws ksp::Canceled after Ctrl-C, also where the work did not report meanwhile.
    void throwIfInterrupted() const;
    /// Runs work that reports nothing and leaves nothing behind but unfinished files (UnfinishedFiles.h),
    /// such as the drawing of a frame: Ctrl-C meanwhile ends the program at once, with the line and the exit
    /// status of a cancellation. Throws ksp::Canceled when it was pressed before.
    template <typename Work>
    auto runSilent(Work work)
    {
        const ImmediateEnd immediate(*this);
        return work();
    }
    /// Wipes the bar, so that a message has the line to itself.
    void wipe();

private:
    struct Private;
    struct ImmediateEnd
    {
        explicit ImmediateEnd(ProgressBar& bar);
        ~ImmediateEnd();
        ImmediateEnd(const ImmediateEnd&) = delete;
        ImmediateEnd& operator=(const ImmediateEnd&) = delete;
    };
    std::unique_ptr<Private> m_private;
};
