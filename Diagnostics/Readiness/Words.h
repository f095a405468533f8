#pragma once

#include <string>
#include <vector>

#include "Common/VQMDataObject.h"

namespace readiness {

/// "'text'"
std::string Quoted(const std::string& text);

/// "'A', 'B' and 'C'"
std::string QuotedList(const std::vector<std::string>& texts);

/// "1 file", "2 files"
std::string Counted(uVQMINT64 number, const std::string& what);

/// "17 bytes", "1.1 GB"
std::string BytesText(uVQMINT64 bytes);

} // namespace readiness
