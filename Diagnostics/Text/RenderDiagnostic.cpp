#include "Diagnostics/Text/RenderDiagnostic.h"

#include <algorithm>

#include "Diagnostics/Text/TerminalText.h"
#include "Platform/common/Utf8.h"

namespace {

constexpr char kIndent[] = "    ";
constexpr char kCut[] = "...";

/// A source text as one line for a terminal.
std::string Shown(std::string text)
{
    std::replace(text.begin(), text.end(), '\t', ' ');
    return EscapedForTerminal(text);
}

} // namespace

std::string RenderSource(const Snippet& source, const Style& style)
{
    if (source.text.empty()) {
        return "";
    }
    const std::string before = (source.cutBefore ? kCut : "") + Shown(source.text.substr(0, source.start));
    const std::string subject = Shown(source.text.substr(source.start, source.length));
    const std::string after = Shown(source.text.substr(source.start + source.length)) + (source.cutAfter ? kCut : "");
    const std::string marker = "^" + std::string(std::max<std::size_t>(WidthOnTerminal(subject), 1) - 1, '~');
    return kIndent + before + subject + after + "\n" + kIndent + std::string(WidthOnTerminal(before), ' ') +
           style.Good(marker) + "\n";
}

std::string RenderFirstLine(const std::string& name, const Diagnostic& diagnostic, const Style& style)
{
    std::string text = diagnostic.message;
    if (!diagnostic.expected.empty()) {
        text += "; expected " + diagnostic.expected;
    }
    if (!diagnostic.effect.empty()) {
        text += "; " + diagnostic.effect;
    }
    const std::string place = EscapedForTerminal(name) + ":" + std::to_string(diagnostic.line) + ":" +
                              std::to_string(diagnostic.column) + ":";
    return style.Bold(place) + " " + style.Paint(diagnostic.severity, NameOf(diagnostic.severity) + std::string(":")) +
           " " + EscapedForTerminal(text) + " [" + diagnostic.id + "]\n";
}

Json SourceJson(const Snippet& source)
{
    const std::string before = Utf8(source.text.substr(0, source.start));
    const std::string subject = Utf8(source.text.substr(source.start, source.length));
    return {{"text", before + subject + Utf8(source.text.substr(source.start + source.length))},
            {"start", platform::CountCodePoints(before)},
            {"length", platform::CountCodePoints(subject)},
            {"cut_before", source.cutBefore},
            {"cut_after", source.cutAfter}};
}
