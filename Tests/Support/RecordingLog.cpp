#include "Tests/Support/RecordingLog.h"

#include <cctype>
#include <cstdio>
#include <string>

#include "Tests/Support/Recorder.h"

namespace {

std::string Format(const char* format, va_list arguments)
{
    va_list copy;
    va_copy(copy, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it is a copy of the caller's
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length < 0) {
        return "(not to be formatted)";
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    return text;
}

/// "file: function(line) > message" without the line; any other text is kept whole, so that a
/// test that expects the prefix fails with the text before its eyes.
std::string WithoutLine(const std::string& text)
{
    const std::size_t arrow = text.find(") > ");
    if (arrow == std::string::npos) {
        return text;
    }
    std::size_t digits = arrow;
    while (digits > 0 && std::isdigit(static_cast<unsigned char>(text[digits - 1])) != 0) {
        --digits;
    }
    if (digits == arrow || text[digits] == '0' || digits == 0 || text[digits - 1] != '(') {
        return text;
    }
    return text.substr(0, digits - 1) + text.substr(arrow + 1);
}

} // namespace

int recorder::RecordLogLine(int priority, const char* tag, const char* format, va_list arguments)
{
    const std::string text = Format(format, arguments);
    // `Log` renders priority and tag; the text already holds file and function.
    std::string line = Log(priority, tag, "", "", "");
    line.resize(line.size() - std::string(": "
                                          " > ")
                                  .size());
    Record(line + WithoutLine(text));
    return static_cast<int>(text.size());
}
