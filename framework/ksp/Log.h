#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace ksp {

/// The application's log: every line goes to the registered handlers and into a ring of the last lines.
///
/// All operations are thread-safe. Handlers run on the thread that logs, in the order of registration, one at
/// a time: a handler must not wait for another thread. It may log (its own entries go to the other handlers,
/// never to itself), and may add and remove handlers, itself too; one that was removed is not called any
/// more.
class HOSTFRAMEWORK_EXPORT Log
{
public:
    /// The numbers are part of the contract with modules, which may pass them as plain integers.
    enum MessageType { Debug = 0, Info = 1, Error = 2, Warning = 3 };

    using Handler = std::function<void(MessageType type, const QString& text)>;

    /// Writes one entry; text may hold several lines.
    static void message(MessageType type, const QString& text);
    static void error(const QString& text) { message(Error, text); }
    static void warning(const QString& text) { message(Warning, text); }
    static void info(const QString& text) { message(Info, text); }
    static void debug(const QString& text) { message(Debug, text); }

    /// Registers a handler; returns the number to remove it by (never 0). Without any handler, entries of
    /// type Error and Warning go to standard error.
    static int addHandler(Handler handler);
    static void removeHandler(int number);

    /// The last entries, oldest first, at most count of them; the log keeps 500.
    static QStringList lastLines(int count);
};

} // namespace ksp
