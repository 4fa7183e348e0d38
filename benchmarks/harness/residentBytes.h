#pragma once

#include <QtCore/QFile>
#include <QtCore/QString>

#include <malloc.h>

/// A number of kilobytes in a file of lines like "Name:  12 kB", in bytes; 0 where there is none.
inline long long bytesTold(const char* path, const char* name)
{
    QFile file(QString::fromLatin1(path));
    if (!file.open(QIODevice::ReadOnly)) return 0;
    for (const QString& line : QString::fromLatin1(file.readAll()).split('\n'))
        if (line.startsWith(QLatin1String(name)))
            return line.simplified().section(' ', 1, 1).toLongLong() * 1024;
    return 0;
}

/// Memory that this process keeps, after what it has freed went back to the system. Not what it shows of
/// files: that the system takes back when it likes.
inline long long residentBytes()
{
    malloc_trim(0);
    const char* const status = "/proc/self/status";
    return bytesTold(status, "RssAnon:") + bytesTold(status, "RssShmem:") + bytesTold(status, "VmSwap:");
}

/// Memory that the machine could still give.
inline long long availableBytes()
{
    return bytesTold("/proc/meminfo", "MemAvailable:");
}
