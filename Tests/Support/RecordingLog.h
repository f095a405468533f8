#pragma once

#include <cstdarg>

namespace recorder {

/// The recording platform's `dlog_print`, for a test program that defines another `dlog_print`.
int RecordLogLine(int priority, const char* tag, const char* format, va_list arguments);

} // namespace recorder
