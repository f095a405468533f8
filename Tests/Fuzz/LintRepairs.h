#pragma once

#include <string>
#include <string_view>

/// Mends the document as `schedule lint --fix` does and gives what is wrong with the result, or empty text: the
/// mended rules find only what had no repair, the library reads the values that were meant, and nothing but the
/// named characters has changed.
std::string FindRepairFault(std::string_view document);
