#include "Diagnostics/Text/TerminalText.h"

#include <algorithm>

#include "Platform/common/CharacterClass.h"
#include "Platform/common/Utf8.h"
#include "Platform/common/VisibleText.h"

std::string EscapedForTerminal(std::string_view text)
{
    if (!platform::NeedsEscape(text)) {
        return std::string(text);
    }
    std::string out;
    while (!text.empty()) {
        const platform::FirstCharacter first(text);
        const std::string_view bytes = text.substr(0, first.size);
        if (first.visible) {
            out += bytes;
        } else {
            for (const char byte : bytes) {
                platform::AppendEscapedByte(out, byte);
            }
        }
        text.remove_prefix(first.size);
    }
    return out;
}

namespace {

/// Walks over the characters of a text that is safe for a terminal.
class Characters {
public:
    explicit Characters(std::string_view text) : rest_(text) {}

    bool AtEnd() const { return rest_.empty(); }

    /// Takes the next one and gives the columns it takes.
    std::size_t TakeWidth()
    {
        const platform::CodePoint next = platform::FirstCodePoint(rest_);
        rest_.remove_prefix(std::max<std::size_t>(next.size, 1));
        if (platform::IsWithoutWidth(next.value)) {
            return 0;
        }
        return platform::IsWide(next.value) ? 2 : 1;
    }

    std::size_t Left() const { return rest_.size(); }

private:
    std::string_view rest_;
};

} // namespace

std::size_t WidthOnTerminal(const std::string& text)
{
    std::size_t width = 0;
    for (Characters characters(text); !characters.AtEnd();) {
        width += characters.TakeWidth();
    }
    return width;
}

std::string CutForTerminal(const std::string& text, std::size_t columns)
{
    constexpr std::string_view kCut = "...";
    const std::size_t room = columns - std::min(columns, kCut.size());
    std::size_t width = 0;
    std::size_t kept = 0; ///< bytes that leave room for the mark
    for (Characters characters(text); !characters.AtEnd();) {
        width += characters.TakeWidth();
        if (width > columns) {
            return text.substr(0, kept) + std::string(kCut.substr(0, columns));
        }
        if (width <= room) {
            kept = text.size() - characters.Left();
        }
    }
    return text;
}
