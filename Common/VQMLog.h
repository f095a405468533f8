#pragma once

#include <dlog.h>

/// One log line of the product: "<file>: <function>(<line>) > " and the message, as one call of
/// `dlog_print`, so that a line below the platform's threshold costs no formatting.
///
/// The message is a printf format, a string literal, followed by its arguments; the compiler
/// checks them against each other.

/// The product's tag; it doubles as the domain of its message catalogue.
#define VQM_LOG_TAG "Quillmere"

/// Logs in the name of the enclosing function.
#define VQM_LOG(priority, tag, ...) VQM_LOG_AS(__func__, priority, tag, __VA_ARGS__)

#define VQM_LOG_DEBUG(...) VQM_LOG(DLOG_DEBUG, VQM_LOG_TAG, __VA_ARGS__)
#define VQM_LOG_INFO(...) VQM_LOG(DLOG_INFO, VQM_LOG_TAG, __VA_ARGS__)
#define VQM_LOG_ERROR(...) VQM_LOG(DLOG_ERROR, VQM_LOG_TAG, __VA_ARGS__)

/// Log in the name of another function: for helpers that report for the operation they serve.
#define VQM_LOG_DEBUG_AS(function, ...) VQM_LOG_AS(function, DLOG_DEBUG, VQM_LOG_TAG, __VA_ARGS__)
#define VQM_LOG_AS(function, priority, tag, ...) VQM_LOG_IN(__FILE_NAME__, function, priority, tag, __VA_ARGS__)

/// Logs in the name of another function and source file.
/// The first branch never runs; it lets the compiler check the format.
#define VQM_LOG_IN(file, function, priority, tag, ...)                                                                 \
    do {                                                                                                               \
        if (false) {                                                                                                   \
            dlog_print(priority, tag, __VA_ARGS__);                                                                    \
        } else {                                                                                                       \
            vqmlog::Print(priority, tag, "%s: %s(%d) > " VQM_LOG_FIRST(__VA_ARGS__, ), file, function, __LINE__,       \
                          __VA_ARGS__);                                                                                \
        }                                                                                                              \
    } while (false)

#define VQM_LOG_FIRST(first, ...) first

namespace vqmlog {

template <typename... Arguments>
void Print(log_priority priority, const char* tag, const char* prefixedFormat, const char* file, const char* function,
           int line, const char* /*format*/, Arguments... arguments)
{
    dlog_print(priority, tag, prefixedFormat, file, function, line, arguments...);
}

} // namespace vqmlog
