#pragma once

#include <benchmarks/harness/Machine.h>
#include <benchmarks/harness/Result.h>

#include <QtCore/QStringList>

#include <map>
#include <utility>
#include <vector>

/// Results as people read them, and as the next run reads them: Markdown, which lies between two marks of a
/// document. Sizes have commas, times are milliseconds.
class ResultTable
{
public:
    /// What is recorded of a workload, by its key and size: see Result::figure.
    using Figures = std::map<std::pair<QString, qint64>, double>;

    /// The line of one result, without a frame, for a terminal.
    static QString line(const Result& result);
    /// Machine, table of what has goals, and table of growth.
    static QString toMarkdown(const std::vector<Result>& results, const Machine& machine);
    /// What the tables of a document record, growth left out.
    static Figures figuresOf(const QString& document);
    /// The document with other tables between the marks; a null text when it lacks the marks.
    static QString replaceTables(const QString& document, const QString& tables);

    /// Whether the result is compared with the table at all: what is no multiple of something else, but a
    /// time, says more about the machine.
    static bool isCompared(const Result& result);
    /// A line for each result that is more than a tenth above what is recorded, and for each that shows
    /// something wrong.
    static QStringList findings(const std::vector<Result>& results, const Figures& recorded);
    static bool isAbove(const Result& result, const Figures& recorded);
    /// The names of results that would be compared, had the table a figure of them.
    static QStringList unrecorded(const std::vector<Result>& results, const Figures& recorded);
    static bool isAnyCompared(const std::vector<Result>& results, const Figures& recorded);
};
