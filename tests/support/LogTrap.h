#pragma once

#include <QtCore/QStringList>

/// Listens to the log for the whole test program. A line of type Error or Warning that the test does not take
/// fails the test during which it was written.
class LogTrap
{
public:
    /// Called once by the test main.
    static void install();
    /// The error and warning lines since the last take or the start of the test, oldest first; they count as
    /// expected.
    static QStringList take();
};
