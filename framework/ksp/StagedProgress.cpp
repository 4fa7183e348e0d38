#include <framework/ksp/StagedProgress.h>

#include <framework/ksp/Canceled.h>
#include <framework/ksp/Log.h>
#include <framework/ksp/runGuarded.h>

#include <algorithm>
#include <cmath>

namespace ksp {
namespace {

/// Whole tenths of a percent: the steps that a person can see. A little is added for tenths that rounding
/// made a bit short.
double tenths(double percentage)
{
    return std::floor(percentage * 10.0 + 1e-6);
}

/// What the stages of one tree share.
struct Tree
{
    StagedProgress::Sink sink;
    double shownPercentage = 0.0;
    QString shownTitle;
    bool canceled = false;
    bool broken = false; ///< the sink threw

    void show(double percentage, const QString& title)
    {
        const bool moved = tenths(percentage) > tenths(shownPercentage);
        if (!sink || broken || (!moved && title == shownTitle)) return;
        shownPercentage = percentage;
        shownTitle = title;
        const QString error = runGuarded([&] { sink(percentage, title); });
        if (error.isEmpty() || broken) return;
        broken = true;
        Log::error(QStringLiteral("Progress is shown no more: %1").arg(error));
    }
};

} // namespace

struct StagedProgress::Node
{
    std::shared_ptr<Tree> tree;
    std::shared_ptr<Node> parent;
    QString title;      ///< the nearest ancestor's when the stage has none of its own
    double begin = 0.0; ///< percent of the parent
    double weight = 0.0;
    double percentage = 0.0;
    bool closed = false;

    ~Node()
    {
        if (parent) close();
    }

    bool isOpen() const { return !closed && (!parent || parent->isOpen()); }

    void advance(double to, const QString& reporter)
    {
        if (!isOpen() || std::isnan(to)) return;
        percentage = std::max(percentage, std::min(to, 100.0));
        if (parent)
            parent->advance(begin + weight * percentage / 100.0, reporter);
        else
            tree->show(percentage, reporter);
    }

    void close()
    {
        if (closed) return;
        advance(100.0, parent ? parent->title : title);
        closed = true;
    }
};

StagedProgress::StagedProgress(Sink sink, const QString& title)
    : m_node(std::make_shared<Node>())
{
    m_node->tree = std::make_shared<Tree>();
    m_node->tree->sink = std::move(sink);
    m_node->title = title;
    m_node->advance(0.0, title);
}

StagedProgress::StagedProgress(std::shared_ptr<Node> node)
    : m_node(std::move(node))
{
}

StagedProgress StagedProgress::dummy()
{
    return StagedProgress(Sink());
}

StagedProgress StagedProgress::startStage(double weight, const QString& title)
{
    auto stage = std::make_shared<Node>();
    stage->tree = m_node->tree;
    stage->parent = m_node;
    stage->title = title.isEmpty() ? m_node->title : title;
    stage->begin = m_node->percentage;
    stage->weight = weight > 0.0 ? std::min(weight, 100.0 - stage->begin) : 0.0;
    stage->advance(0.0, stage->title);
    return StagedProgress(stage);
}

void StagedProgress::close()
{
    m_node->close();
}

double StagedProgress::getPercentage() const
{
    return m_node->percentage;
}

void StagedProgress::setPercentage(double percentage)
{
    m_node->advance(percentage, m_node->title);
}

void StagedProgress::setDone(double done, double total)
{
    if (total != 0.0) setPercentage(100.0 * done / total);
}

void StagedProgress::cancel()
{
    m_node->tree->canceled = true;
}

bool StagedProgress::isCanceled() const
{
    return m_node->tree->canceled;
}

void StagedProgress::throwIfCanceled() const
{
    if (isCanceled()) throw Canceled();
}

} // namespace ksp
