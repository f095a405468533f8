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

std::string SourceLines(const Snippet& source)
{
    if (source.text.empty()) {
        return "";
    }
    const std::string before = (source.cutBefore ? kCut : "") + Shown(source.text.substr(0, source.start));
    const std::string subject = Shown(source.text.substr(source.start, source.length));
    const std::string after = Shown(source.text.substr(source.start + source.length)) + (source.cutAfter ? kCut : "");
    std::string marker(WidthOnTerminal(before), ' ');
    marker += '^';
    marker.append(std::max<std::size_t>(WidthOnTerminal(subject), 1) - 1, '~');
    return kIndent + before + subject + after + "\n" + kIndent + marker + "\n";
}

std::string FirstLine(const std::string& name, const Diagnostic& finding)
{
    std::string text = finding.message;
    if (!finding.expected.empty()) {
        text += "; expected " + finding.expected;
    }
    text += "; " + finding.effect;
    return EscapedForTerminal(name) + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ": " +
           NameOf(finding.severity) + ": " + EscapedForTerminal(text) + " [" + finding.id + "]\n";
}

} // namespace

std::string Render(const FileResult& file)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += FirstLine(file.name, finding) + SourceLines(finding.source);
    }
    return text;
}

std::string RenderOneline(const FileResult& file)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += FirstLine(file.name, finding);
    }
    return text;
}

} // namespace lint
