#include <framework/ksp/Log.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace ksp {
namespace {

constexpr std::size_t keptEntries = 500;

struct Registration
{
    int number = 0;
    Log::Handler handler;
    bool running = false;
    bool removed = false;
};

/// Recursive, because handlers log, add and remove handlers while they run.
struct State
{
    std::recursive_mutex mutex;
    std::vector<std::shared_ptr<Registration>> handlers;
    std::deque<QString> entries;
    int lastNumber = 0;
};

/// Never destroyed: destructors of static objects log, too.
State& state()
{
    static State* const instance = new State;
    return *instance;
}

void writeToStandardError(Log::MessageType type, const QString& text)
{
    if (type != Log::Error && type != Log::Warning) return;
    std::fprintf(stderr, "%s: %s\n", type == Log::Error ? "error" : "warning", text.toUtf8().constData());
}

void call(Registration& registration, Log::MessageType type, const QString& text)
{
    if (registration.removed || registration.running) return;
    registration.running = true;
    try {
        registration.handler(type, text);
    } catch (...) {
        // the log is the last resort for errors: one of its own must not reach whoever logs
        writeToStandardError(type, text);
    }
    registration.running = false;
}

} // namespace

void Log::message(MessageType type, const QString& text)
{
    State& log = state();
    const std::lock_guard<std::recursive_mutex> lock(log.mutex);
    log.entries.push_back(text);
    if (log.entries.size() > keptEntries) log.entries.pop_front();
    if (log.handlers.empty()) writeToStandardError(type, text);
    const auto handlers = log.handlers; // handlers may come and go while these run
    for (const auto& registration : handlers)
        call(*registration, type, text);
}

int Log::addHandler(Handler handler)
{
    State& log = state();
    const std::lock_guard<std::recursive_mutex> lock(log.mutex);
    auto registration = std::make_shared<Registration>();
    registration->number = ++log.lastNumber;
    registration->handler = std::move(handler);
    log.handlers.push_back(registration);
    return registration->number;
}

void Log::removeHandler(int number)
{
    State& log = state();
    const std::lock_guard<std::recursive_mutex> lock(log.mutex);
    const auto found = std::find_if(log.handlers.begin(), log.handlers.end(),
                                    [number](const auto& entry) { return entry->number == number; });
    if (found == log.handlers.end()) return;
    (*found)->removed = true;
    log.handlers.erase(found);
}

QStringList Log::lastLines(int count)
{
    State& log = state();
    const std::lock_guard<std::recursive_mutex> lock(log.mutex);
    const std::size_t wanted = std::min(log.entries.size(), static_cast<std::size_t>(std::max(count, 0)));
    QStringList lines;
    lines.reserve(static_cast<int>(wanted));
    for (std::size_t i = log.entries.size() - wanted; i < log.entries.size(); ++i)
        lines.append(log.entries[i]);
    return lines;
}

} // namespace ksp
