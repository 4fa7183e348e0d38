#pragma once

#include <benchmarks/harness/Result.h>

#include <QtCore/QString>

#include <functional>
#include <vector>

/// One workload: what is measured at each of its sizes.
struct Work
{
    QString key;
    QString title;
    double goal;                  ///< see Result
    std::vector<qint64> sizes;    ///< ascending
    std::vector<qint64> fewSizes; ///< of a quick run
    /// Measures at one size. Results have the size, and where they name none of their own the key, the title
    /// and the goal, of the workload.
    std::function<std::vector<Result>(qint64 size, const PairedRuns::Effort& effort)> measure;
};

/// All workloads, in the order of the table.
std::vector<Work> allWorks();
