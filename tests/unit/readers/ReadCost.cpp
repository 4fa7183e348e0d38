#include "ReadCost.h"

#include <framework/ksp/CommonError.h>

#include <gtest/gtest.h>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double peakOf(const rusage& usage)
{
    return static_cast<double>(usage.ru_maxrss) * 1024.0;
}

double secondsOf(const rusage& usage)
{
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// In the child: reads and tells through the pipe the peak before and the refusal.
[[noreturn]] void readAndTell(const std::function<void()>& read, int pipe)
{
    rusage before;
    getrusage(RUSAGE_SELF, &before);
    QString refusal;
    try {
        read();
    } catch (const ksp::CommonError& error) {
        refusal = error.text();
    }
    const QByteArray told = QByteArray::number(peakOf(before), 'f', 0) + ' ' + refusal.toUtf8();
    const bool complete = write(pipe, told.constData(), static_cast<std::size_t>(told.size())) == told.size();
    _exit(complete ? 0 : 1);
}

} // namespace

ReadCost costOf(const std::function<void()>& read)
{
    ReadCost cost;
    int ends[2];
    malloc_trim(0); // what is free here would hide what the reading needs
    if (pipe(ends) != 0) {
        ADD_FAILURE() << "there is no pipe";
        return cost;
    }
    const pid_t child = fork();
    if (child == 0) readAndTell(read, ends[1]);
    close(ends[1]);
    QByteArray told;
    char bytes[4096];
    for (ssize_t count; (count = ::read(ends[0], bytes, sizeof bytes)) > 0;)
        told.append(bytes, static_cast<int>(count));
    close(ends[0]);
    int status = 0;
    rusage usage;
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        ADD_FAILURE() << "the reading ended with status " << status;
        return cost;
    }
    const int space = told.indexOf(' ');
    cost.memory = peakOf(usage) - told.left(space).toDouble();
    cost.seconds = secondsOf(usage);
    cost.refusal = QString::fromUtf8(told.mid(space + 1));
    return cost;
}
