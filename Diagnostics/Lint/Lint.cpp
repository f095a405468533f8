#include "Diagnostics/Lint/Lint.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "Diagnostics/Lint/DocumentParse.h"
#include "Diagnostics/Lint/FindingList.h"
#include "Diagnostics/Lint/ForeignDocument.h"

namespace lint {

Report Lint(const ByteSource& source, const Options& options)
{
    FindingList findings(options.maxFindings, options.ignored);
    DocumentReader reader(source);
    DocumentParse parse(reader, findings, options);
    parse.Begin();
    if (const char* const encoding = WideEncoding(reader.Head()); encoding != nullptr && reader.EndedAtNul()) {
        parse.ReportAtStart({Rule::kUnreadableEncoding,
                             std::string("the document is encoded in ") + encoding +
                                 ", which editors also call \"Unicode\"; save it as UTF-8",
                             "", "the TV reads up to the first zero byte and rejects the document"});
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
