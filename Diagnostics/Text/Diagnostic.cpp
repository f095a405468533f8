#include "Diagnostics/Text/Diagnostic.h"

#include <algorithm>
#include <string_view>

const char* NameOf(Severity severity)
{
    switch (severity) {
    case Severity::kError:
        return "error";
    case Severity::kWarning:
        return "warning";
    case Severity::kNote:
        break;
    }
    return "note";
}

std::size_t CharactersIn(const Snippet& snippet)
{
    const std::string_view subject = std::string_view(snippet.text).substr(snippet.start, snippet.length);
    return static_cast<std::size_t>(std::count_if(
        subject.begin(), subject.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}
