#include <benchmarks/harness/PairedRuns.h>

#include <benchmarks/harness/quantileOf.h>

#include <utility>

PairedRuns::PairedRuns(const Side& ours, const Side& plain, const Effort& effort)
{
    runAll(effort.sides == PlainAlone ? plain : ours, effort.sides == Both ? &plain : nullptr, effort);
}

PairedRuns::PairedRuns(const Side& ours, const Effort& effort)
{
    runAll(ours, nullptr, effort);
}

void PairedRuns::runAll(const Side& ours, const Side* plain, const Effort& effort)
{
    Times unused;
    for (int i = 0; i < effort.warmUps; ++i) {
        time(ours, unused);
        if (plain) time(*plain, unused);
    }
    const Stopwatch all;
    while (pairs() < effort.leastPairs || (pairs() < effort.mostPairs && all.wall() < 1e3 * effort.seconds)) {
        const bool isPlainFirst = pairs() % 2 != 0;
        if (plain && isPlainFirst) time(*plain, m_plain);
        time(ours, m_ours);
        if (plain && !isPlainFirst) time(*plain, m_plain);
    }
}

void PairedRuns::time(const Side& side, Times& times)
{
    const Lap lap = side();
    times.wall.push_back(lap.wall);
    times.processor.push_back(lap.processor);
}

PairedRuns::Side PairedRuns::timed(Run prepare, Run run)
{
    return [prepare = std::move(prepare), run = std::move(run)] {
        prepare();
        const Stopwatch stopwatch;
        run();
        return stopwatch.lap();
    };
}

Comparison PairedRuns::compare(const std::vector<double>& ours, const std::vector<double>& plain)
{
    Comparison result;
    result.ours = quantileOf(ours, 0.5);
    if (plain.empty()) return result;
    result.plain = quantileOf(plain, 0.5);
    std::vector<double> ratios;
    for (std::size_t i = 0; i < ours.size(); ++i)
        ratios.push_back(ours[i] / plain[i]);
    result.ratio = quantileOf(ratios, 0.5);
    result.low = quantileOf(ratios, 0.25);
    result.high = quantileOf(ratios, 0.75);
    return result;
}

Comparison PairedRuns::wall() const
{
    return compare(m_ours.wall, m_plain.wall);
}

Comparison PairedRuns::processor() const
{
    return compare(m_ours.processor, m_plain.processor);
}
