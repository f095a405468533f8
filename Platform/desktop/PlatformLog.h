#pragma once

#include <dlog.h>

/// One log line of the desktop platform itself: "<file>: <function>(<line>) > " and the message,
/// under a tag of its own, so that whoever reads the product's lines sees only those.
#define PLATFORM_LOG(priority, format, ...)                                                                            \
    dlog_print(priority, "Platform", "%s: %s(%d) > " format, __FILE_NAME__, __func__, __LINE__, ##__VA_ARGS__)
