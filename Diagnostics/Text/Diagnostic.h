#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "Diagnostics/Text/Edit.h"

/// How much a diagnostic matters.
enum class Severity {
    kError,   ///< the TV will not do what is written or wanted
    kWarning, ///< it will, but probably not what was meant
    kNote,    ///< worth knowing
};

inline constexpr int kSeverityCount = 3;

/// "error", "warning" or "note".
const char* NameOf(Severity severity);

/// A stretch of a source line, as UTF-8 where the document is well encoded.
struct Snippet {
    std::string text;
    std::size_t start = 0;  ///< bytes of `text` before what the diagnostic is about
    std::size_t length = 0; ///< bytes of `text` that it is about
    bool cutBefore = false; ///< the line begins earlier
    bool cutAfter = false;  ///< the line goes on
};

/// How many characters a snippet is about.
std::size_t CharactersIn(const Snippet& snippet);

/// One thing that is wrong or worth knowing, before it is rendered in any way. Texts quote names and
/// documents and are not escaped.
struct Diagnostic {
    /// What the diagnostic is about, for a renderer that shows one of many.
    enum class Subject { kGeneral, kContentFile };

    std::string id{}; ///< a stable name, such as "file-missing"
    Severity severity = Severity::kError;
    bool blocking = false; ///< it keeps the TV from playing or from launching the companion
    std::string message{}; ///< what is wrong, with the offending value
    std::string path{};    ///< the file or directory it is about; empty where another part says which
    Subject subject = Subject::kGeneral;

    // The rest is of diagnostics about a place in a document.

    std::string expected{};      ///< what should stand there; may be empty
    std::string effect{};        ///< what the TV does with it
    std::uint64_t line = 0;      ///< from 1; 0 for a diagnostic about no place
    std::uint64_t column = 0;    ///< from 1, in characters (code points), a byte order mark not counted
    std::uint64_t endColumn = 0; ///< of the character after the last one on this line; `column` for a mere point
    Snippet source{};            ///< empty where the line is no longer at hand
    std::optional<Edit> fix{};   ///< what mends it, where there is no doubt about what was meant
};
