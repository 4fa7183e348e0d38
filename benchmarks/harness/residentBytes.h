#pragma once

#include <QtCore/QFile>
#include <QtCore/QString>

#include <malloc.h>
#include <unistd.h>

/// Memory that this process keeps, after what it has freed went back to the system.
inline long long residentBytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) return 0;
    return QString::fromLatin1(file.readAll()).section(' ', 1, 1).toLongLong() * sysconf(_SC_PAGESIZE);
}

/// Memory that the machine could still give.
inline long long availableBytes()
{
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly)) return 0;
    for (const QString& line : QString::fromLatin1(file.readAll()).split('\n'))
        if (line.startsWith(QLatin1String("MemAvailable:")))
            return line.simplified().section(' ', 1, 1).toLongLong() * 1024;
    return 0;
}
