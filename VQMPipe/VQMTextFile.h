#pragma once

#include <string>

#include "Common/VQMDataObject.h"

/// How reading a text file ended.
enum class VQMTextFileResult {
    Complete,
    NotOpened,
    NotRead, ///< opened, but a step failed
};

/// Appends the file's bytes and one zero byte to `text`. Reads the file through a separate pipe,
/// `readUnit` bytes per step. Unless the result is complete, `text` holds the bytes read so far,
/// without the zero byte.
///
/// Throws `std::bad_alloc` when memory does not suffice for the request or the zero byte. When it
/// does not suffice to open or to read, the result says so. May run on any thread.
VQMTextFileResult VQMReadTextFile(const std::string& path, uVQMINT64 readUnit, CVQMDataBufferObject& text);
