#include "Diagnostics/Edit/UnifiedDiff.h"

#include <algorithm>
#include <cstdint>

#include "Diagnostics/Edit/ApplyEdits.h"
#include "Diagnostics/Text/Encodings.h"
#include "Diagnostics/Text/TerminalText.h"

namespace {

constexpr std::uint64_t kContext = 3;
constexpr std::size_t kPart = 65536;
constexpr std::string_view kLineEnds = "\r\n";

/// Whole lines of the document that edits change.
struct Change {
    std::size_t begin = 0;   ///< offset of the first line
    std::size_t end = 0;     ///< offset after the last one
    std::uint64_t line = 0;  ///< number of the first line, from 0
    std::uint64_t lines = 0; ///< how many there are
    std::vector<Edit> edits{};
};

/// The place after the line that `offset` is in.
std::size_t LineEnd(std::string_view text, std::size_t offset)
{
    const std::size_t end = text.find_first_of(kLineEnds, offset);
    if (end == std::string_view::npos) {
        return text.size();
    }
    return end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
}

/// The place where the line begins that `offset` is in.
std::size_t LineStart(std::string_view text, std::size_t offset)
{
    const std::size_t end = offset == 0 ? std::string_view::npos : text.find_last_of(kLineEnds, offset - 1);
    return end == std::string_view::npos ? 0 : end + 1;
}

/// The place where the line begins that ends at `offset`.
std::size_t PreviousLine(std::string_view text, std::size_t offset)
{
    const std::size_t ends = offset >= 2 && text.substr(offset - 2, 2) == "\r\n" ? 2 : 1;
    return LineStart(text, offset - ends);
}

std::uint64_t CountLines(std::string_view text)
{
    std::uint64_t count = 0;
    for (std::size_t at = 0; at < text.size(); at = LineEnd(text, at)) {
        ++count;
    }
    return count;
}

std::string Shown(std::string_view line)
{
    const std::string text = IsUtf8(line) ? std::string(line) : FromLatin1(line);
    std::string shown;
    for (std::size_t begin = 0;;) {
        const std::size_t tab = std::min(text.find('\t', begin), text.size());
        shown += EscapedForTerminal(std::string_view(text).substr(begin, tab - begin));
        if (tab == text.size()) {
            return shown;
        }
        shown += '\t';
        begin = tab + 1;
    }
}

class DiffWriter {
public:
    DiffWriter(std::string_view document, const TextSink& write) : document_(document), write_(write) {}

    bool Write(const std::vector<Edit>& edits)
    {
        std::vector<Change> hunk;
        for (std::size_t next = 0; next < edits.size() && wanted_;) {
            Change change = TakeChange(edits, next);
            // Changes whose context lines meet share a hunk.
            if (!hunk.empty() && change.line - (hunk.back().line + hunk.back().lines) > 2 * kContext) {
                WriteHunk(hunk);
                hunk.clear();
            }
            hunk.push_back(std::move(change));
        }
        if (wanted_) {
            WriteHunk(hunk);
        }
        Flush();
        return wanted_;
    }

private:
    /// The lines around the edit `next` and those after it that touch the same lines.
    Change TakeChange(const std::vector<Edit>& edits, std::size_t& next)
    {
        Change change;
        change.begin = LineStart(document_, static_cast<std::size_t>(edits[next].offset));
        change.line = line_ + CountLines(document_.substr(counted_, change.begin - counted_));
        change.end = change.begin;
        for (; next < edits.size() && (change.edits.empty() || edits[next].offset < change.end); ++next) {
            change.end = std::max(change.end, LineEnd(document_, static_cast<std::size_t>(edits[next].offset) +
                                                                     edits[next].oldText.size()));
            change.edits.push_back(edits[next]);
        }
        change.lines = CountLines(document_.substr(change.begin, change.end - change.begin));
        counted_ = change.end;
        line_ = change.line + change.lines;
        return change;
    }

    /// The change's lines with the edits.
    std::string NewLines(Change change) const
    {
        for (Edit& edit : change.edits) {
            edit.offset -= change.begin;
        }
        return ApplyEdits(document_.substr(change.begin, change.end - change.begin), change.edits);
    }

    void WriteHunk(const std::vector<Change>& hunk)
    {
        std::size_t begin = hunk.front().begin;
        std::uint64_t first = hunk.front().line;
        for (std::uint64_t count = 0; count < kContext && begin > 0; ++count, --first) {
            begin = PreviousLine(document_, begin);
        }
        std::size_t end = hunk.back().end;
        std::uint64_t after = 0;
        for (; after < kContext && end < document_.size(); ++after) {
            end = LineEnd(document_, end);
        }
        const std::uint64_t oldLines = hunk.back().line + hunk.back().lines + after - first;
        std::uint64_t added = 0; // less the lines that they replace; wraps around where that is below 0
        for (const Change& change : hunk) {
            added += CountLines(NewLines(change)) - change.lines;
        }
        Put("@@ -" + Range(first, oldLines) + " +" + Range(first + added_, oldLines + added) + " @@\n");
        added_ += added;
        for (const Change& change : hunk) {
            WriteLines(' ', document_.substr(begin, change.begin - begin));
            WriteLines('-', document_.substr(change.begin, change.end - change.begin));
            WriteLines('+', NewLines(change));
            begin = change.end;
        }
        WriteLines(' ', document_.substr(begin, end - begin));
    }

    static std::string Range(std::uint64_t line, std::uint64_t lines)
    {
        return std::to_string(line + 1) + (lines == 1 ? "" : "," + std::to_string(lines));
    }

    void WriteLines(char mark, std::string_view text)
    {
        while (!text.empty() && wanted_) {
            const std::string_view line = text.substr(0, LineEnd(text, 0));
            text.remove_prefix(line.size());
            const std::string_view content = line.substr(0, line.find_first_of(kLineEnds));
            Put(mark + Shown(content) + "\n" + (content.size() == line.size() ? "\\ No newline at end of file\n" : ""));
        }
    }

    void Put(const std::string& text)
    {
        buffer_ += text;
        if (buffer_.size() >= kPart) {
            Flush();
        }
    }

    void Flush()
    {
        wanted_ = wanted_ && (buffer_.empty() || write_(buffer_));
        buffer_.clear();
    }

    std::string_view document_;
    const TextSink& write_;
    bool wanted_ = true;
    std::string buffer_;
    std::size_t counted_ = 0; ///< offset up to which lines were counted
    std::uint64_t line_ = 0;  ///< how many lines there are up to it
    std::uint64_t added_ = 0; ///< lines that the hunks before have added
};

} // namespace

bool WriteUnifiedDiff(const std::string& name, std::string_view document, const std::vector<Edit>& edits,
                      const TextSink& write)
{
    if (edits.empty()) {
        return true;
    }
    const std::string shown = EscapedForTerminal(name);
    return write("--- " + shown + "\n+++ " + shown + "\n") && DiffWriter(document, write).Write(edits);
}
