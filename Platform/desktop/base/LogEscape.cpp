#include "Platform/desktop/base/LogEscape.h"

#include "Platform/desktop/base/VisibleText.h"

namespace desktop {

namespace {

void AppendEscape(std::string& out, char c)
{
    switch (c) {
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        AppendEscapedByte(out, c);
    }
}

} // namespace

bool NeedsEscape(std::string_view text)
{
    // Nearly every line is plain ASCII, which a loop without a way out finds soonest.
    bool suspect = false;
    for (const char character : text) {
        const auto c = static_cast<unsigned char>(character);
        suspect |= c < 0x20 || c >= 0x7f;
    }
    while (suspect && !text.empty()) {
        const FirstCharacter first(text);
        if (!first.visible) {
            return true;
        }
        text.remove_prefix(first.size);
    }
    return false;
}

std::string Escape(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + 16);
    while (!text.empty()) {
        const FirstCharacter first(text);
        const std::string_view bytes = text.substr(0, first.size);
        if (first.visible) {
            out += bytes;
        } else {
            for (const char byte : bytes) {
                AppendEscape(out, byte);
            }
        }
        text.remove_prefix(first.size);
    }
    return out;
}

} // namespace desktop
