#pragma once

#include "Common/VQMLog.h"

// All sources of the pipe and its request log under the name VQMFilePipe.cpp, which readers of the log
// know.

#define VQM_LOG_PIPE(...) VQM_LOG_PIPE_AS(__func__, __VA_ARGS__)
#define VQM_LOG_PIPE_AS(function, ...) VQM_LOG_IN("VQMFilePipe.cpp", function, DLOG_DEBUG, VQM_LOG_TAG, __VA_ARGS__)
