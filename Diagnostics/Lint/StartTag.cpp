#include "Diagnostics/Lint/StartTag.h"

#include <algorithm>

namespace lint {

StartTag::StartTag(const DocumentWindow& window, const char* name, const char** attributes, const Position& position,
                   std::uint64_t size)
    : window_(window),
      name_(name),
      info_(InfoOf(ElementNamed(name_))),
      attributes_(attributes),
      position_(position),
      last_(position),
      size_(size)
{
    while (attributes_[2 * count_] != nullptr) {
        ++count_;
    }
}

std::optional<std::size_t> StartTag::Find(std::string_view name) const
{
    // The TV looks at the first slots only.
    const std::size_t seen = std::min(count_, static_cast<std::size_t>(info_.slots));
    for (std::size_t index = 0; index < seen; ++index) {
        if (name == AttributeName(index)) {
            return index;
        }
    }
    return std::nullopt;
}

Range StartTag::Whole() const
{
    return {position_, size_};
}

Range StartTag::NamePlace(std::size_t index) const
{
    const AttributePlace* place = PlaceOf(index);
    return place == nullptr ? Whole() : Range{PositionAt(position_.offset + place->name), place->nameSize};
}

Range StartTag::ValuePlace(std::size_t index) const
{
    const AttributePlace* place = PlaceOf(index);
    if (place == nullptr) {
        return Whole();
    }
    Range range = {PositionAt(position_.offset + place->value), place->valueSize};
    const std::string_view bytes = window_.View(range.position.offset, range.size);
    if (bytes == AttributeValue(index)) { // they differ where the parser has replaced entities
        range.bytes = bytes;
    }
    return range;
}

/// Callers ask from the first attribute to the last, so counting goes on from the place before.
Position StartTag::PositionAt(std::uint64_t offset) const
{
    last_ = window_.PositionAt(offset, offset < last_.offset ? position_ : last_);
    return last_;
}

const AttributePlace* StartTag::PlaceOf(std::size_t index) const
{
    if (!scanned_) {
        places_ = ScanAttributes(window_.View(position_.offset, size_));
        scanned_ = true;
    }
    return index < places_.size() ? &places_[index] : nullptr;
}

} // namespace lint
