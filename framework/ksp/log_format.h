#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/Log.h>

namespace ksp {

/// Writes one log entry made from a printf format (UTF-8 text, UTF-8 string arguments).
HOSTFRAMEWORK_EXPORT void log_format(Log::MessageType type, const char* format, ...)
#ifdef __GNUC__
    __attribute__((format(printf, 2, 3)))
#endif
    ;

} // namespace ksp
