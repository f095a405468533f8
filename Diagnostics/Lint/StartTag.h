#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "Diagnostics/Lint/DocumentWindow.h"
#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/TagScanner.h"
#include "Diagnostics/Lint/Vocabulary.h"

namespace lint {

/// A start tag as the parser gives it, with the places of its parts.
class StartTag {
public:
    /// `attributes` are names and values in turns up to a null name, as the parser has them. The
    /// window has gone forward to the tag.
    StartTag(const DocumentWindow& window, const char* name, const char** attributes, const Position& position,
             std::uint64_t size);

    Element Kind() const { return info_.element; }
    const ElementInfo& Info() const { return info_; }
    std::string_view Name() const { return name_; }

    std::size_t AttributeCount() const { return count_; }
    const char* AttributeName(std::size_t index) const { return attributes_[2 * index]; }
    const char* AttributeValue(std::size_t index) const { return attributes_[2 * index + 1]; }

    /// The attribute of that name, if it is among those that the TV looks at.
    std::optional<std::size_t> Find(std::string_view name) const;

    const Position& Start() const { return position_; }

    // Where an attribute has no place of its own, the whole tag stands in.

    Range Whole() const;
    Range NamePlace(std::size_t index) const;
    Range ValuePlace(std::size_t index) const;

private:
    const AttributePlace* PlaceOf(std::size_t index) const;
    Position PositionAt(std::uint64_t offset) const;

    const DocumentWindow& window_;
    std::string_view name_;
    const ElementInfo& info_;
    const char** attributes_;
    std::size_t count_ = 0;
    Position position_;
    mutable Position last_; ///< the place asked for last
    std::uint64_t size_;
    mutable bool scanned_ = false; ///< places are looked for when the first is asked for
    mutable std::vector<AttributePlace> places_;
};

} // namespace lint
