#include "Diagnostics/Edit/ApplyEdits.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

std::vector<Edit> SortedEdits(std::string_view document, std::vector<Edit> edits)
{
    std::sort(edits.begin(), edits.end(),
              [](const Edit& left, const Edit& right) { return left.offset < right.offset; });
    std::uint64_t free = 0; // from where on no edit lies
    bool isFirst = true;
    for (const Edit& edit : edits) {
        // Edits may touch. An insertion may not touch the edit before it: their order would be a guess.
        const bool apart = isFirst || edit.offset > free || (edit.offset == free && !edit.oldText.empty());
        if (!apart || edit.offset > document.size() ||
            document.substr(static_cast<std::size_t>(edit.offset), edit.oldText.size()) != edit.oldText) {
            throw std::logic_error("an edit at byte " + std::to_string(edit.offset) + " does not fit the document");
        }
        free = edit.offset + edit.oldText.size();
        isFirst = false;
    }
    return edits;
}

std::string ApplyEdits(std::string_view document, const std::vector<Edit>& edits)
{
    std::string result;
    result.reserve(document.size());
    std::size_t copied = 0;
    for (const Edit& edit : edits) {
        const auto offset = static_cast<std::size_t>(edit.offset);
        result += document.substr(copied, offset - copied);
        result += edit.newText;
        copied = offset + edit.oldText.size();
    }
    result += document.substr(copied);
    return result;
}
