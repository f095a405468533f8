#pragma once

#include <cstdint>
#include <string>

/// One replacement in a document: bytes of the file as it is encoded.
struct Edit {
    std::uint64_t offset = 0; ///< from the file's start, in bytes
    std::string oldText{};    ///< what stands there
    std::string newText{};    ///< what takes its place
};
