#include <cstdarg>

#include <dlog.h>

#include "Tests/Support/RecordingLog.h"

// A separate file, so that a test program which defines this function does not link it from the library.
int dlog_print(log_priority prio, const char* tag, const char* fmt, ...)
{
    va_list arguments;
    va_start(arguments, fmt);
    const int length = recorder::RecordLogLine(prio, tag, fmt, arguments);
    va_end(arguments);
    return length;
}
