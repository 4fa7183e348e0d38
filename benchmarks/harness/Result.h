#pragma once

#include <benchmarks/harness/PairedRuns.h>

#include <QtCore/QString>

/// What was measured of one workload at one size.
struct Result
{
    enum Kind {
        Paired, ///< ours beside a plain program: the goal is for the ratio of processor times
        Single, ///< one number of ours, in the unit; the goal is for it
        Growth  ///< microseconds an item, which should not grow with their number; no goal of its own
    };
    Kind kind = Paired;
    QString key;       ///< "B1"
    QString work;      ///< what is done, for people
    qint64 size = 0;   ///< how many items, triangles or points
    double goal = 0.0; ///< what should not be exceeded; 0: none
    QString unit;      ///< of a single number
    Comparison processor;
    Comparison wall;
    int pairs = 0;
    QString remark;  ///< instead of a verdict
    QString problem; ///< what is wrong with the result, and not with its speed; empty: nothing

    /// The times of the runs.
    static Result of(const PairedRuns& runs)
    {
        Result result;
        result.processor = runs.processor();
        result.wall = runs.wall();
        result.pairs = runs.pairs();
        return result;
    }
    /// What the goal is for.
    double figure() const { return kind == Paired ? processor.ratio : processor.ours; }
    bool isMet() const { return problem.isEmpty() && (goal <= 0.0 || figure() <= goal); }
};
