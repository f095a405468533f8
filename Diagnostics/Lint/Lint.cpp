#include "Diagnostics/Lint/Lint.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Diagnostics/Lint/DocumentParse.h"
#include "Diagnostics/Lint/FindingList.h"

namespace lint {

namespace {

/// A document in the encodings of wider units begins with one of these, or its "<" has a zero byte
/// beside it.
bool IsWideEncoding(std::string_view head)
{
    using namespace std::string_view_literals;
    static constexpr std::string_view kHeads[] = {"\xFF\xFE"sv, "\xFE\xFF"sv, "<\0"sv,
                                                  "\0<"sv,      "\0\0\0<"sv,  "\0\0\xFE\xFF"sv};
    return std::any_of(std::begin(kHeads), std::end(kHeads),
                       [head](std::string_view known) { return head.substr(0, known.size()) == known; });
}

} // namespace

Report Lint(const ByteSource& source, const Options& options)
{
    FindingList findings(options.maxFindings, options.ignored);
    DocumentReader reader(source);
    DocumentParse parse(reader, findings, options);
    parse.Begin();
    if (reader.EndedAtNul() && IsWideEncoding(reader.Head())) {
        parse.ReportAtStart({Rule::kUnreadableEncoding, "the document is encoded in units wider than a byte", "UTF-8",
                             "the TV reads up to the first zero byte and rejects the document"});
        return findings.Take();
    }
    parse.Run();
    if (reader.HasTextAfterNul()) {
        parse.ReportAtEnd({Rule::kTextAfterNul, "a zero byte, and text after it", "text without zero bytes",
                           "the TV reads only what is before it"});
    }
    return findings.Take();
}

Report Lint(std::string_view document, const Options& options)
{
    const auto source = [&document](char* buffer, std::size_t size) {
        const std::size_t count = std::min(size, document.size());
        if (count != 0) {
            std::memcpy(buffer, document.data(), count);
        }
        document.remove_prefix(count);
        return count;
    };
    return Lint(ByteSource(source), options);
}

} // namespace lint
