#include "Platform/desktop/bus/CappedText.h"

namespace desktop {

namespace {

bool ContinuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

std::string CappedText(std::string_view text, std::size_t longest)
{
    if (text.size() <= longest) {
        return std::string(text);
    }
    std::size_t end = longest;
    while (end > 0 && ContinuesCharacter(text[end])) {
        --end;
    }
    return std::string(text.substr(0, end)) + "...";
}

} // namespace desktop
