#include "tests/support/LogTrap.h"

#include <framework/ksp/Log.h>
#include <framework/ksp/log_format.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

using ksp::Log;

namespace {

/// Collects what is logged while it lives.
struct Listener
{
    QStringList lines;
    int number = Log::addHandler([this](Log::MessageType type, const QString& text) {
        lines << QString::number(int(type)) + QLatin1Char(' ') + text;
    });
    ~Listener() { Log::removeHandler(number); }
};

} // namespace

TEST(Log, numbersOfTheTypesAreAContract)
{
    EXPECT_EQ(int(Log::Debug), 0);
    EXPECT_EQ(int(Log::Info), 1);
    EXPECT_EQ(int(Log::Error), 2);
    EXPECT_EQ(int(Log::Warning), 3);
}

TEST(Log, handlersGetTypeAndText)
{
    Listener listener;
    Log::debug("d");
    Log::info("i");
    Log::error("e");
    Log::warning("w");
    EXPECT_EQ(listener.lines, (QStringList{"0 d", "1 i", "2 e", "3 w"}));
    EXPECT_EQ(LogTrap::take(), (QStringList{"e", "w"}));
}

TEST(Log, handlersRunInTheOrderOfRegistration)
{
    QString order;
    const int a = Log::addHandler([&](Log::MessageType, const QString&) { order += "a"; });
    const int b = Log::addHandler([&](Log::MessageType, const QString&) { order += "b"; });
    Log::info("x");
    Log::removeHandler(a);
    Log::removeHandler(b);
    EXPECT_EQ(order, "ab");
    EXPECT_NE(a, 0);
    EXPECT_NE(a, b);
}

TEST(Log, removedHandlerHearsNothingMore)
{
    int calls = 0;
    const int number = Log::addHandler([&](Log::MessageType, const QString&) { ++calls; });
    Log::removeHandler(number);
    Log::removeHandler(number);
    Log::info("x");
    EXPECT_EQ(calls, 0);
}

TEST(Log, handlerMayRemoveItself)
{
    int calls = 0;
    int number = 0;
    number = Log::addHandler([&](Log::MessageType, const QString&) {
        ++calls;
        Log::removeHandler(number);
    });
    Log::info("x");
    Log::info("y");
    EXPECT_EQ(calls, 1);
}

TEST(Log, handlerThatIsRemovedByAnEarlierOneIsNotCalledAnyMore)
{
    int calls = 0;
    int second = 0;
    const int first = Log::addHandler([&](Log::MessageType, const QString&) { Log::removeHandler(second); });
    second = Log::addHandler([&](Log::MessageType, const QString&) { ++calls; });
    Log::info("x");
    Log::removeHandler(first);
    EXPECT_EQ(calls, 0);
}

TEST(Log, handlerThatLogsIsHeardByTheOthersOnly)
{
    Listener listener;
    const int number =
        Log::addHandler([](Log::MessageType, const QString& text) { Log::info("about " + text); });
    Log::info("x");
    Log::removeHandler(number);
    EXPECT_EQ(listener.lines, (QStringList{"1 x", "1 about x"}));
    EXPECT_EQ(Log::lastLines(2), (QStringList{"x", "about x"}));
}

TEST(Log, twoHandlersThatLogDoNotRunForever)
{
    int calls = 0;
    const auto chatter = [&](Log::MessageType, const QString&) {
        ++calls;
        Log::info("more");
    };
    const int a = Log::addHandler(chatter);
    const int b = Log::addHandler(chatter);
    Log::info("x");
    Log::removeHandler(a);
    Log::removeHandler(b);
    // a hears x and logs, which b hears and logs, which nobody idle hears; then the same with b first
    EXPECT_EQ(calls, 4);
}

TEST(Log, throwingHandlerReachesNeitherCallerNorOthers)
{
    const int number =
        Log::addHandler([](Log::MessageType, const QString&) { throw std::runtime_error("no"); });
    Listener listener;
    EXPECT_NO_THROW(Log::info("x"));
    Log::removeHandler(number);
    EXPECT_EQ(listener.lines, (QStringList{"1 x"}));
}

TEST(Log, lastLinesAreOldestFirstAndAtMostAsManyAsAsked)
{
    Log::info("one");
    Log::debug("two\nlines");
    Log::info("three");
    EXPECT_EQ(Log::lastLines(3), (QStringList{"one", "two\nlines", "three"}));
    EXPECT_EQ(Log::lastLines(1), QStringList{"three"});
    EXPECT_TRUE(Log::lastLines(0).isEmpty());
    EXPECT_TRUE(Log::lastLines(-1).isEmpty());
}

TEST(Log, keepsFiveHundredEntries)
{
    for (int i = 0; i < 503; ++i)
        Log::debug(QString::number(i));
    const QStringList lines = Log::lastLines(10000);
    ASSERT_EQ(lines.size(), 500);
    EXPECT_EQ(lines.first(), "3");
    EXPECT_EQ(lines.last(), "502");
}

TEST(Log, manyThreadsLoseNothing)
{
    Listener listener;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i) {
                Log::info("x");
                Log::removeHandler(Log::addHandler([](Log::MessageType, const QString&) {}));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(listener.lines.count("1 x"), 800);
}

namespace {

[[noreturn]] void logWithoutHandlers()
{
    for (int number = 1; number < 10000; ++number)
        Log::removeHandler(number);
    Log::debug("a debug line");
    Log::info("an info line");
    Log::error("an error line");
    Log::warning("a warning line");
    std::exit(0);
}

} // namespace

TEST(LogDeathTest, withoutHandlersErrorsAndWarningsGoToStandardError)
{
    EXPECT_EXIT(logWithoutHandlers(), testing::ExitedWithCode(0),
                "^error: an error line\nwarning: a warning line\n$");
}

TEST(Log, formatMakesOneEntry)
{
    Listener listener;
    ksp::log_format(Log::Info, "%s: %d of %5.2f%%", "Größe", 3, 12.5);
    EXPECT_EQ(listener.lines, QStringList{QString::fromUtf8("1 Größe: 3 of 12.50%")});
}

TEST(Log, formatHoldsLongText)
{
    const std::string text(100000, 'x');
    ksp::log_format(Log::Debug, "<%s>", text.c_str());
    EXPECT_EQ(Log::lastLines(1).value(0), "<" + QString::fromStdString(text) + ">");
}
