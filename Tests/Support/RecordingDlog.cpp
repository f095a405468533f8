#include <cstdarg>

#include <dlog.h>

#include "Tests/Support/RecordingLog.h"

// A file of its own: a test program that defines this function leaves it in the library.
int dlog_print(log_priority prio, const char* tag, const char* fmt, ...)
{
    va_list arguments;
    va_start(arguments, fmt);
    const int length = recorder::RecordLogLine(prio, tag, fmt, arguments);
    va_end(arguments);
    return length;
}
