#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace status {

/// Asks a question in a process of its own, which ends itself after `limit`: some libraries wait
/// for a server that never answers, and know no time limit.
///
/// `question` runs in a copy of this process; what it returns arrives here, and nothing else of
/// what it does. Call it while this process has one thread. Nothing comes back when the time was up
/// or the copy ended before it had an answer. Throws `std::system_error` when there can be no copy.
std::optional<std::string> AskWithin(std::chrono::milliseconds limit, const std::function<std::string()>& question);

} // namespace status
