#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics/Text/Diagnostic.h"
#include "Diagnostics/Text/Edit.h"

/// What a schedule announces against what a media folder has.
namespace sizes {

/// A number of the document that is to become another one.
struct Correction {
    const char* what = ""; ///< "size", "item_count" or "total_size"
    std::string file{};    ///< of a size: the content file
    Edit edit{};
    std::uint64_t line = 0;   ///< from 1
    std::uint64_t column = 0; ///< from 1, in characters
};

struct Report {
    std::vector<Correction> corrections; ///< in the document's order
    std::vector<Diagnostic> problems{};  ///< what has no correction, such as a missing file; the first hundred
    std::uint64_t problemCount = 0;      ///< of all problems
    std::uint64_t items = 0;             ///< how many items the document has

    /// The corrections as edits of the document.
    std::vector<Edit> Edits() const;
};

/// Compares the size of each item with the file of that name in `media`, and item_count and total_size with the
/// items as they are after the corrections. A file that is missing or empty keeps its announced size.
///
/// Throws `std::runtime_error` when the folder cannot be read, or the TV rejects the document or misreads its
/// encoding; the message says why.
Report Compare(const std::string& name, std::string_view document, const std::string& media);

/// Writes the report as a document of Docs/schemas/schedule-sizes.schema.json. Returns false when the sink did.
bool WriteJson(const Report& report, const std::string& name, const std::string& media, bool written,
               const std::function<bool(std::string_view part)>& write);

} // namespace sizes
