#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Diagnostics/Lint/Rule.h"

namespace lint {

/// A stretch of a source line, as UTF-8 where the document is well encoded.
struct Excerpt {
    std::string text;
    std::size_t start = 0;  ///< bytes of `text` before what the finding is about
    std::size_t length = 0; ///< bytes of `text` that it is about
    bool cutBefore = false; ///< the line begins earlier
    bool cutAfter = false;  ///< the line goes on
};

/// How many characters an excerpt is about.
std::size_t CharactersIn(const Excerpt& excerpt);

/// One thing found, before it is rendered in any way.
struct Finding {
    Rule rule = Rule::kCount;
    std::uint64_t line = 1;      ///< from 1
    std::uint64_t column = 1;    ///< from 1, in characters (code points), a byte order mark not counted
    std::uint64_t endColumn = 1; ///< of the character after the last one on this line; `column` for a mere point
    Excerpt source;              ///< empty where the line is no longer at hand
    std::string message;         ///< what is wrong, with the offending value
    std::string expected;        ///< what should stand there
    std::string effect;          ///< what the TV does with it
};

struct Counts {
    std::uint64_t errors = 0;
    std::uint64_t warnings = 0;
    std::uint64_t notes = 0;
};

/// All that is known of one document.
struct Report {
    std::vector<Finding> findings; ///< sorted by place, then rule
    Counts counts;                 ///< of everything found, kept or not
    std::uint64_t notKept = 0;     ///< how many findings are counted only
};

} // namespace lint
