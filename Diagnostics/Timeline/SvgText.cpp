#include "Diagnostics/Timeline/SvgText.h"

#include "Diagnostics/Text/TerminalText.h"
#include "Diagnostics/Text/Words.h"

namespace timeline::svg {

namespace {

std::string Attributes(std::string_view attributes)
{
    return attributes.empty() ? "" : " " + std::string(attributes);
}

const char* NameOf(Anchor anchor)
{
    switch (anchor) {
    case Anchor::kStart:
        return "start";
    case Anchor::kMiddle:
        return "middle";
    case Anchor::kEnd:
        break;
    }
    return "end";
}

} // namespace

std::string Number(Length length)
{
    std::string whole = std::to_string(length / 100);
    const Length rest = length % 100;
    if (rest == 0) {
        return whole;
    }
    return whole + "." + (rest % 10 == 0 ? std::to_string(rest / 10) : TwoDigits(rest));
}

std::string Escaped(std::string_view text)
{
    std::string out;
    for (const char character : EscapedForTerminal(text)) {
        switch (character) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        default:
            out += character;
        }
    }
    return out;
}

std::string Rectangle(const Box& box, std::string_view attributes)
{
    return "<rect x=\"" + Number(box.x) + "\" y=\"" + Number(box.y) + "\" width=\"" + Number(box.width) +
           "\" height=\"" + Number(box.height) + "\"" + Attributes(attributes) + "/>\n";
}

std::string Line(Length x, Length y, Anchor anchor, std::string_view text, std::string_view attributes)
{
    return "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" text-anchor=\"" + NameOf(anchor) + "\"" +
           Attributes(attributes) + ">" + Escaped(text) + "</text>\n";
}

std::string Element(std::string_view name, std::string_view text, std::string_view attributes)
{
    return "<" + std::string(name) + Attributes(attributes) + ">" + Escaped(text) + "</" + std::string(name) + ">\n";
}

} // namespace timeline::svg
