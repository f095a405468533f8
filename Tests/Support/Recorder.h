#pragma once

#include <functional>
#include <string>
#include <vector>

/// The product's calls of the platform in order: one line of text per call and per log line.
///
/// The recording platform defines the platform's functions, so that a test links it instead of a
/// real platform. Each of its functions records its call here.
namespace recorder {

using Lines = std::vector<std::string>;

/// Adds a line; safe from any thread.
void Record(std::string line);

/// From now on `listener` hears each line right after it was added, on the thread that adds it;
/// an empty one ends it. Not to be changed while another thread adds lines.
void SetListener(std::function<void(const std::string&)> listener);

/// Everything since the last `Clear` or `Take`.
Lines Trace();

/// Only the log lines of the trace.
Lines LogLines();

/// The trace, which is empty afterwards.
Lines Take();
void Clear();

/// The trace line of one log line, as `dlog_print` records it. The message keeps its line ends;
/// a null tag shows as "(null)". The line number is left out (it is checked to be one).
///
///     Log(DLOG_DEBUG, "Quillmere", "main.cpp", "elm_main", "VQMKeygrab main Start\n")
///     == "D/Quillmere main.cpp: elm_main > VQMKeygrab main Start\n"
std::string Log(int priority, const char* tag, const std::string& file, const std::string& function,
                const std::string& message);

/// Expected log lines that share a tag and a file.
class LogOf {
public:
    LogOf(const char* tag, std::string file) : tag_(tag), file_(std::move(file)) {}

    std::string Debug(const std::string& function, const std::string& message) const;
    std::string Error(const std::string& function, const std::string& message) const;

private:
    const char* tag_;
    std::string file_;
};

} // namespace recorder
