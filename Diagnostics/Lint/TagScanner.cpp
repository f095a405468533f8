#include "Diagnostics/Lint/TagScanner.h"

namespace lint {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr auto kNone = std::string_view::npos;

} // namespace

std::vector<AttributePlace> ScanAttributes(std::string_view tag)
{
    std::vector<AttributePlace> places;
    if (tag.empty() || tag.front() != '<') {
        return places;
    }
    std::size_t position = tag.find_first_of(" \t\r\n/>", 1);
    while (position != kNone) {
        AttributePlace place;
        place.name = tag.find_first_not_of(kWhiteSpace, position);
        if (place.name == kNone || tag[place.name] == '/' || tag[place.name] == '>') {
            break;
        }
        const std::size_t nameEnd = tag.find_first_of(" \t\r\n=", place.name);
        const std::size_t quote = nameEnd == kNone ? kNone : tag.find_first_of("'\"", nameEnd);
        const std::size_t end = quote == kNone ? kNone : tag.find(tag[quote], quote + 1);
        if (end == kNone) {
            break;
        }
        place.nameSize = nameEnd - place.name;
        place.value = quote + 1;
        place.valueSize = end - place.value;
        places.push_back(place);
        position = end + 1;
    }
    return places;
}

} // namespace lint
