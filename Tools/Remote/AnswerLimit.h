#pragma once

#include <chrono>
#include <string>

/// While it lives, the X server has to answer in time: otherwise the process ends with a message and
/// `ExitCode::kCouldNotRun`. Xlib waits for an answer for ever, as that of a server that is stopped.
///
/// One at a time.
class AnswerLimit {
public:
    /// `display` is what to call the server in the message.
    AnswerLimit(const std::string& display, std::chrono::seconds limit);
    ~AnswerLimit();

    AnswerLimit(const AnswerLimit&) = delete;
    AnswerLimit& operator=(const AnswerLimit&) = delete;
};
