#pragma once

#include <functional>
#include <string>

#include "Diagnostics/Readiness/Readiness.h"

namespace readiness {

/// What the file system and the parser have to say of a document.
struct DocumentFile {
    DocumentState state = DocumentState::kMissing;
    std::string problem{};    ///< a clause to follow the document's name: "is a directory"
    bool notExamined = false; ///< the system refuses to say whether it is there
    bool wouldBlock = false;  ///< the library's reading would not come back from it, or not on this machine
};

/// Whether there is a file that the library may be let read; its content is not looked at. The
/// state is then `kLoaded`.
DocumentFile Examine(const std::string& path);

/// Opens the document, examines what is open, and lets `read` read it by the path that it is given. The
/// document that was examined is the one that is read, even when another file takes its place. `read`
/// returns whether the library took the document; if not, the result says why.
DocumentFile ReadExamined(const std::string& path, const std::function<bool(const std::string& path)>& read);

/// Why the library did not take a document: what keeps it from being read, or the first place
/// where it is not well-formed.
DocumentFile WhyNotParsed(const std::string& path);

} // namespace readiness
