#pragma once

#include <benchmarks/harness/PairedRuns.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

/// What the program is asked to do.
struct Options
{
    bool isQuick = false;
    PairedRuns::Sides sides = PairedRuns::Both; ///< one alone is neither compared nor recorded
    bool checks = false;                        ///< compares with the document
    bool writes = false;                        ///< into the document
    QString filter;                             ///< which benchmarks run; empty: all
    QString document;                           ///< with the recorded tables
    QString commit;                             ///< to be recorded
    QStringList child; ///< a run for another process of this program: what, and its arguments

    /// Throws std::invalid_argument, with a line for the user.
    static Options of(const QStringList& arguments);
};
