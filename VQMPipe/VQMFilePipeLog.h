#pragma once

#include "Common/VQMLog.h"

// The pipe and its request log as functions of VQMFilePipe.cpp, wherever their code is: readers of
// the log know that name.

#define VQM_LOG_PIPE(...) VQM_LOG_PIPE_AS(__func__, __VA_ARGS__)
#define VQM_LOG_PIPE_AS(function, ...) VQM_LOG_IN("VQMFilePipe.cpp", function, DLOG_DEBUG, VQM_LOG_TAG, __VA_ARGS__)
