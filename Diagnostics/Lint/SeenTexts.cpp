#include "Diagnostics/Lint/SeenTexts.h"

#include <algorithm>
#include <functional>

namespace lint {

namespace {

constexpr std::size_t kFirstSlots = 64;

} // namespace

std::optional<std::uint64_t> SeenTexts::Add(std::string_view text, std::uint64_t line)
{
    if (2 * (entries_.size() + 1) > slots_.size()) {
        Grow();
    }
    // Open addressing: from the slot of the hash on, the first free one ends the search.
    const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(text));
    const std::size_t mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    for (; slots_[place].number != 0; place = (place + 1) & mask) {
        if (slots_[place].hash == hash && TextOf(slots_[place].number) == text) {
            return entries_[slots_[place].number - 1].line;
        }
    }
    texts_ += text;
    entries_.push_back({static_cast<std::uint32_t>(texts_.size()), static_cast<std::uint32_t>(line)});
    slots_[place] = {hash, static_cast<std::uint32_t>(entries_.size())};
    return std::nullopt;
}

void SeenTexts::Clear()
{
    texts_.clear();
    entries_.clear();
    slots_.clear();
}

void SeenTexts::Grow()
{
    const std::vector<Slot> old = slots_;
    slots_.assign(old.empty() ? kFirstSlots : 2 * old.size(), Slot());
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
        if (slot.number == 0) {
            continue;
        }
        std::size_t place = slot.hash & mask;
        while (slots_[place].number != 0) {
            place = (place + 1) & mask;
        }
        slots_[place] = slot;
    }
}

std::string_view SeenTexts::TextOf(std::uint32_t number) const
{
    const std::size_t begin = number == 1 ? 0 : entries_[number - 2].textEnd;
    return std::string_view(texts_).substr(begin, entries_[number - 1].textEnd - begin);
}

std::optional<std::uint64_t> SeenNumbers::Add(int number, std::uint64_t line)
{
    if (ascending_.empty() || number > ascending_.back().number) {
        ascending_.push_back({number, static_cast<std::uint32_t>(line)});
        return std::nullopt;
    }
    // Always found: the number is not above the last one.
    const auto place = std::lower_bound(ascending_.begin(), ascending_.end(), number,
                                        [](const Entry& entry, int wanted) { return entry.number < wanted; });
    if (place->number == number) {
        return place->line;
    }
    return others_.Add(std::to_string(number), line);
}

void SeenNumbers::Clear()
{
    ascending_.clear();
    others_.Clear();
}

} // namespace lint
