#include "Diagnostics/Lint/Render.h"

#include <algorithm>
#include <string_view>

#include "Diagnostics/Text/TerminalText.h"

namespace lint {

namespace {

constexpr char kIndent[] = "    ";
constexpr char kCut[] = "...";

/// A source text as one line for a terminal.
std::string Shown(std::string text)
{
    std::replace(text.begin(), text.end(), '\t', ' ');
    return EscapedForTerminal(text);
}

std::string SourceLines(const Snippet& source, const Style& style)
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

std::string FirstLine(const std::string& name, const Diagnostic& finding, const Style& style)
{
    std::string text = finding.message;
    if (!finding.expected.empty()) {
        text += "; expected " + finding.expected;
    }
    text += "; " + finding.effect;
    const std::string place =
        EscapedForTerminal(name) + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ":";
    return style.Bold(place) + " " + style.Paint(finding.severity, NameOf(finding.severity) + std::string(":")) + " " +
           EscapedForTerminal(text) + " [" + finding.id + "]\n";
}

} // namespace

std::string Render(const FileResult& file, const Style& style)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += FirstLine(file.name, finding, style) + SourceLines(finding.source, style);
    }
    return text;
}

std::string RenderOneline(const FileResult& file, const Style& style)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += FirstLine(file.name, finding, style);
    }
    return text;
}

} // namespace lint
