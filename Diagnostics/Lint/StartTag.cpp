#include "Diagnostics/Lint/StartTag.h"

#include <algorithm>

namespace lint {

StartTag::StartTag(const DocumentWindow& window, const char* name, const char** attributes, const Mark& mark,
                   std::uint64_t size)
    : window_(window),
      name_(name),
      info_(InfoOf(ElementNamed(name_))),
      attributes_(attributes),
      mark_(mark),
      last_(mark),
      size_(size)
{
    while (attributes_[2 * count_] != nullptr) {
        ++count_;
    }
}

std::optional<std::size_t> StartTag::Find(std::string_view name) const
{
    const std::size_t seen = std::min(count_, static_cast<std::size_t>(info_.slots));
    for (std::size_t index = 0; index < seen; ++index) {
        if (name == AttributeName(index)) {
            return index;
        }
    }
    return std::nullopt;
}

Spot StartTag::Whole() const
{
    return {mark_, size_};
}

Spot StartTag::NamePlace(std::size_t index) const
{
    const AttributePlace* place = PlaceOf(index);
    return place == nullptr ? Whole() : Spot{MarkAt(mark_.offset + place->name), place->nameSize};
}

Spot StartTag::ValuePlace(std::size_t index) const
{
    const AttributePlace* place = PlaceOf(index);
    return place == nullptr ? Whole() : Spot{MarkAt(mark_.offset + place->value), place->valueSize};
}

/// Attributes are asked about from the first to the last: counting goes on where it was.
Mark StartTag::MarkAt(std::uint64_t offset) const
{
    last_ = window_.MarkAt(offset, offset < last_.offset ? mark_ : last_);
    return last_;
}

const AttributePlace* StartTag::PlaceOf(std::size_t index) const
{
    if (!scanned_) {
        places_ = ScanAttributes(window_.View(mark_.offset, size_));
        scanned_ = true;
    }
    return index < places_.size() ? &places_[index] : nullptr;
}

} // namespace lint
