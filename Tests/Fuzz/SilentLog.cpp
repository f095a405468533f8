// A log that formats each line and keeps none: a format that does not fit its arguments shows, and
// the memory that a target is held to is not the log's.

#include <cstdarg>
#include <cstdio>

#include <dlog.h>

#include "Tests/Fuzz/Check.h"

int dlog_print(log_priority /*prio*/, const char* /*tag*/, const char* fmt, ...)
{
    char start[256];
    va_list arguments;
    va_start(arguments, fmt);
    const int length = std::vsnprintf(start, sizeof start, fmt, arguments);
    va_end(arguments);
    Check(length > 0, "a log line cannot be formatted");
    return length;
}
