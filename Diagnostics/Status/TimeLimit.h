#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "Diagnostics/Text/Json.h"

namespace status {

/// Asks a question in a process of its own, which ends itself after `limit`: some libraries wait
/// for a server that never answers, and know no time limit.
///
/// `question` runs in a copy of this process; what it returns arrives here, and nothing else of
/// what it does. Call it while this process has one thread. Nothing comes back when the time was up
/// or the copy ended before it had an answer. Throws `std::system_error` when there can be no copy.
std::optional<std::string> AskWithin(std::chrono::milliseconds limit, const std::function<std::string()>& question);

/// The same for an answer that is a record, carried by the `to_json` and `from_json` of its type.
template <typename Answer>
std::optional<Answer> AskRecordWithin(std::chrono::milliseconds limit, Answer (*question)())
{
    const std::optional<std::string> text = AskWithin(limit, [question] { return Json(question()).dump(); });
    return text ? std::optional<Answer>(Json::parse(*text).get<Answer>()) : std::nullopt;
}

} // namespace status
