#pragma once

#include <string>

#include "Data/VQMScheduleRecords.h"

namespace schedule {

/// The largest document that is read here, in bytes. Half a million items fit.
constexpr std::size_t kMaxDocument = 67108864;

/// A schedule document as the library reads it.
struct PolicyFile {
    std::string name; ///< what to call it in messages; not escaped
    _VQMPolicy policy;
    bool textAfterNul = false; ///< there is text after the first zero byte, which the library never reads
};

/// Reads a document from a path, or from stdin for "-", and parses it with the library's own
/// parser. Time and memory are bounded whatever the path leads to.
///
/// Throws `std::runtime_error` when it cannot be read, is larger than
/// `kMaxDocument` or is rejected by the library; its message says why, and where in the document.
///
/// `text`, unless it is null, receives the document as far as the library reads it.
PolicyFile ReadPolicyFile(const std::string& path, std::string* text = nullptr);

/// A sentence about text that the library never reads; empty when there is none.
std::string UnreadTextNote(const PolicyFile& file);

} // namespace schedule
