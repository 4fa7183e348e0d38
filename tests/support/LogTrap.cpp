#include "LogTrap.h"

#include <framework/ksp/Log.h>

#include <gtest/gtest.h>

#include <mutex>

namespace {

std::mutex mutex;
QStringList lines;

class Listener : public ::testing::EmptyTestEventListener
{
    void OnTestStart(const ::testing::TestInfo&) override { LogTrap::take(); }
    void OnTestEnd(const ::testing::TestInfo&) override
    {
        for (const QString& line : LogTrap::take())
            ADD_FAILURE() << "unexpected line in the log: " << line.toStdString();
    }
};

} // namespace

void LogTrap::install()
{
    ksp::Log::addHandler([](ksp::Log::MessageType type, const QString& text) {
        if (type != ksp::Log::Error && type != ksp::Log::Warning) return;
        const std::lock_guard<std::mutex> lock(mutex);
        lines.append(text);
    });
    ::testing::UnitTest::GetInstance()->listeners().Append(new Listener);
}

QStringList LogTrap::take()
{
    const std::lock_guard<std::mutex> lock(mutex);
    QStringList taken;
    taken.swap(lines);
    return taken;
}
