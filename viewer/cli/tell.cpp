#include <viewer/cli/tell.h>

#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

void tell(const QString& text)
{
    std::fprintf(stderr, "viewer3d: %s\n", printable(text).toLocal8Bit().constData());
}

void print(const QByteArray& text)
{
    errno = 0;
    const auto size = static_cast<std::size_t>(text.size());
    if (std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0) return;
    throw ksp::CommonError(QStringLiteral("standard output cannot be written: ") +
                           QString::fromLocal8Bit(std::strerror(errno)));
}

void holdStandardStreams()
{
    std::signal(SIGXFSZ, SIG_IGN);
    // open() takes the lowest number that is free: the one that is missing
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) == -1)
            static_cast<void>(open("/dev/null", stream == STDOUT_FILENO ? O_RDONLY : O_RDWR));
}
