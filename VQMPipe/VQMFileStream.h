#pragma once

#include <fstream>
#include <memory>
#include <string>

#include "Common/VQMDataObject.h"

/// The file streams under the pipe.

constexpr std::ios_base::openmode kVQMWriteMode = std::ios_base::out | std::ios_base::trunc | std::ios_base::binary;
constexpr std::ios_base::openmode kVQMReadMode = std::ios_base::in | std::ios_base::binary;
constexpr std::ios_base::openmode kVQMAppendMode = std::ios_base::out | std::ios_base::app | std::ios_base::binary;

/// Whether a transfer has failed: the state is exactly the badbit or exactly the failbit. The end of the
/// file sets the eofbit as well, so it does not count.
bool VQMTransferHasFailed(const std::ios& stream);

/// Closes a stream that was opened with `openMode`: the out bit stands for a `std::ofstream`, the
/// in bit for a `std::ifstream`. A failed close sets the stream's failbit and never throws, even if
/// the stream's exception mask asks for it.
void VQMCloseStream(void* stream, int openMode);

/// The next `size` bytes and a zero byte. Bytes that the file does not have are zero; whether that
/// is an error is in the stream's state. Throws `std::bad_alloc` when memory cannot hold them.
std::unique_ptr<char[]> VQMReadBytes(std::ifstream& stream, uVQMINT64 size);
