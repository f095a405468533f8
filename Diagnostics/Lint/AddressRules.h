#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Diagnostics/Lint/Problem.h"

namespace lint {

/// An IPv4 address or mask as a number; none for any other text.
std::optional<std::uint32_t> ParseIPv4(const std::string& text);

std::optional<Problem> JudgeAddress(const std::string& attribute, const std::string& text);
std::optional<Problem> JudgeSubnetMask(const std::string& attribute, const std::string& text);

} // namespace lint
