#pragma once

#include <chrono>
#include <ctime>

/// Milliseconds of a run.
struct Lap
{
    double wall;
    double processor; ///< of all threads
};

/// Milliseconds since it was made, by two clocks.
class Stopwatch
{
public:
    double wall() const
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - m_begin).count();
    }
    /// Of all threads of this process.
    double processor() const { return processorTime() - m_processorBegin; }

    Lap lap() const { return {wall(), processor()}; }

    static double processorTime()
    {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
    }

private:
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    double m_processorBegin = processorTime();
};
