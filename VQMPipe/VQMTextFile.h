#pragma once

#include <string>

#include "Common/VQMDataObject.h"

/// How reading a text file ended.
enum class VQMTextFileResult {
    Complete,
    NotOpened,
    NotRead, ///< opened, but a step failed
};

/// Appends the file's bytes and one zero byte to `text`. The file goes through a pipe of its own,
/// `readUnit` bytes per step. Unless the result is complete, `text` holds what was read so far
/// without the zero byte.
///
/// Throws `std::bad_alloc` when memory does not suffice for the request or the zero byte. When it
/// does not suffice to open or to read, the result says so. May run on any thread.
VQMTextFileResult VQMReadTextFile(const std::string& path, uVQMINT64 readUnit, CVQMDataBufferObject& text);
