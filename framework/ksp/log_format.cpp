#include <framework/ksp/log_format.h>

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace ksp {

void log_format(Log::MessageType type, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length >= 0) {
        std::vector<char> text(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(text.data(), text.size(), format, arguments);
        Log::message(type, QString::fromUtf8(text.data(), length));
    } else {
        // an argument that the C locale cannot convert: the format itself still tells where to look
        Log::message(type, QString::fromUtf8(format));
    }
    va_end(arguments);
}

} // namespace ksp
