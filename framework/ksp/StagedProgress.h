#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QString>

#include <functional>
#include <memory>

namespace ksp {

/// Progress of long work, in percent of its whole, split into stages that report as if they were alone.
///
/// A StagedProgress is a handle that may be copied; copies report to the same stage. A stage started with a
/// weight covers that many percent of its parent from where the parent stands. A stage is closed by close()
/// or when its last handle is gone; closing moves the parent to the stage's end. Percentages never go back
/// and stay within 0 to 100. Cancelling holds for the whole tree. Not thread-safe.
class HOSTFRAMEWORK_EXPORT StagedProgress
{
public:
    /// Receives the percentage of the whole and the title of the stage that reported (its nearest parent's
    /// when it has none), each time either changes by what a person could see (a tenth of a percent). What a
    /// sink throws goes to the log and not to the work that reports; the sink is not called any more then. To
    /// stop the work it calls cancel().
    using Sink = std::function<void(double percentage, const QString& title)>;

    explicit StagedProgress(Sink sink, const QString& title = {});
    /// A progress that shows nothing and is never cancelled by anybody but its holders.
    static StagedProgress dummy();

    /// Starts a stage that covers weight percent of this one (clamped to what is left of it).
    StagedProgress startStage(double weight, const QString& title = {});
    /// Ends the stage now; later reports through it are ignored. Closing twice does nothing more.
    void close();

    /// Percent of this stage, 0 to 100.
    double getPercentage() const;
    void setPercentage(double percentage);
    /// Sets the percentage to 100 * done / total; nothing when total is 0.
    void setDone(double done, double total);

    /// Asks the work to stop; the work looks at isCanceled() or calls throwIfCanceled().
    void cancel();
    bool isCanceled() const;
    /// Throws ksp::Canceled when cancel() was called.
    void throwIfCanceled() const;

private:
    struct Node;
    explicit StagedProgress(std::shared_ptr<Node> node);
    std::shared_ptr<Node> m_node;
};

} // namespace ksp
