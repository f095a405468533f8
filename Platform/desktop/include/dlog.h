#pragma once

/// The platform log.

// NOLINTBEGIN(modernize-use-using): the interface is C.

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    DLOG_UNKNOWN = 0,
    DLOG_DEFAULT = 1,
    DLOG_VERBOSE = 2,
    DLOG_DEBUG = 3,
    DLOG_INFO = 4,
    DLOG_WARN = 5,
    DLOG_ERROR = 6,
    DLOG_FATAL = 7,
    DLOG_SILENT = 8,
} log_priority;

/// Writes one log line. A null `tag` is an empty tag; `fmt` is a printf format.
/// Returns the number of bytes written, or a negative error; a line below the threshold gives 0.
/// May be called from any thread.
int dlog_print(log_priority prio, const char* tag, const char* fmt, ...) __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-use-using)
