#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>

#include "Diagnostics/Lint/DocumentReader.h"
#include "Diagnostics/Lint/Report.h"
#include "Diagnostics/Lint/TimeRules.h"

namespace lint {

class Observer;

struct Options {
    schedule::Day today;    ///< what an expiration date is compared with
    std::set<Rule> ignored; ///< rules that find nothing and count nothing
    std::size_t maxFindings = 1000;
    std::uint64_t maxBytes = INT_MAX; ///< the most that the TV parses
    bool asUtf8 = false;              ///< reads UTF-8 whatever encoding the document declares, as once it is mended
    Observer* observer = nullptr;     ///< borrowed; is shown what the document announces
};

/// Checks a schedule document in one pass.
///
/// Memory grows with the largest period and the number of periods, not with the document. What
/// `source` throws passes through. The library's conversions log what they find odd, at debug
/// priority, without a tag.
Report Lint(const ByteSource& source, const Options& options);

/// Of a document that is in memory.
Report Lint(std::string_view document, const Options& options);

} // namespace lint
