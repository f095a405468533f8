#pragma once

#include <cstdarg>

namespace recorder {

/// What the recording platform's `dlog_print` does, for a test program with a `dlog_print` of its own.
int RecordLogLine(int priority, const char* tag, const char* format, va_list arguments);

} // namespace recorder
