#pragma once

#include <dlog.h>

/// One log line of the desktop platform itself: "<file>: <function>(<line>) > " and the message,
/// a printf format with its arguments. Its own tag keeps it apart from the product's lines.
/// The first branch never runs; it lets the compiler check the format.
#define PLATFORM_LOG(priority, ...)                                                                                    \
    do {                                                                                                               \
        if (false) {                                                                                                   \
            dlog_print(priority, desktop::kPlatformTag, __VA_ARGS__);                                                  \
        } else {                                                                                                       \
            desktop::PrintPlatformLine(priority, "%s: %s(%d) > " PLATFORM_LOG_FIRST(__VA_ARGS__, ), __FILE_NAME__,     \
                                       __func__, __LINE__, __VA_ARGS__);                                               \
        }                                                                                                              \
    } while (false)

#define PLATFORM_LOG_FIRST(first, ...) first

namespace desktop {

constexpr char kPlatformTag[] = "Platform";

template <typename... Arguments>
void PrintPlatformLine(log_priority priority, const char* prefixedFormat, const char* file, const char* function,
                       int line, const char* /*format*/, Arguments... arguments)
{
    dlog_print(priority, kPlatformTag, prefixedFormat, file, function, line, arguments...);
}

} // namespace desktop
