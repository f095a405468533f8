#include <cstdarg>

#include <dlog.h>

#include "Tests/Support/AllocationFault.h"
#include "Tests/Support/RecordingLog.h"

// For programs that count allocations: what the record of a log line takes is not the product's.
int dlog_print(log_priority prio, const char* tag, const char* fmt, ...)
{
    const allocation_fault::Spared spared;
    va_list arguments;
    va_start(arguments, fmt);
    const int length = recorder::RecordLogLine(prio, tag, fmt, arguments);
    va_end(arguments);
    return length;
}
