#include <cstdarg>
#include <cstdio>

#include <dlog.h>

int dlog_print(log_priority prio, const char* tag, const char* fmt, ...)
{
    std::va_list arguments;
    va_start(arguments, fmt);
    std::fprintf(stderr, "%d %s ", static_cast<int>(prio), tag == nullptr ? "" : tag);
    const int result = std::vfprintf(stderr, fmt, arguments);
    std::fputc('\n', stderr);
    va_end(arguments);
    return result;
}
