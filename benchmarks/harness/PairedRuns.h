#pragma once

#include <benchmarks/harness/Stopwatch.h>

#include <functional>
#include <vector>

/// Numbers of one kind (milliseconds of a clock) from runs in turns.
struct Comparison
{
    double ours = 0.0;  ///< median
    double plain = 0.0; ///< median; 0 where there is nothing beside ours
    double ratio = 0.0; ///< median of the pairs' ratios: both of a pair have seen the same load
    double low = 0.0;   ///< the quartiles of these
    double high = 0.0;
};

/// Runs two ways of doing the same work in turns, the first of a pair being the second of the next, and takes
/// the time of each by two clocks: that of the wall, and the processor time of all threads, which other
/// programs on the machine disturb less.
class PairedRuns
{
public:
    using Run = std::function<void()>;
    /// One run: returns its own times.
    using Side = std::function<Lap()>;
    /// A side of these; prepare is not timed, and run waits for the end of its work.
    static Side timed(Run prepare, Run run);
    /// Which sides run: one alone is for profilers.
    enum Sides { Both, OursAlone, PlainAlone };
    /// How long to go on: until the seconds are over, but with no fewer and no more pairs than these.
    struct Effort
    {
        int warmUps;
        int leastPairs;
        int mostPairs;
        double seconds;
        Sides sides = Both;
    };

    PairedRuns(const Side& ours, const Side& plain, const Effort& effort);
    /// One way alone.
    PairedRuns(const Side& ours, const Effort& effort);

    Comparison wall() const;
    Comparison processor() const;
    int pairs() const { return static_cast<int>(m_ours.wall.size()); }

private:
    struct Times
    {
        std::vector<double> wall;
        std::vector<double> processor;
    };
    static void time(const Side& side, Times& times);
    static Comparison compare(const std::vector<double>& ours, const std::vector<double>& plain);
    void runAll(const Side& ours, const Side* plain, const Effort& effort);

    Times m_ours;
    Times m_plain;
};
