#pragma once

#include <string>
#include <string_view>

namespace timeline::svg {

/// Hundredths of a pixel, so that a document never depends on how a machine rounds.
using Length = long long;

constexpr Length Pixels(long long pixels)
{
    return pixels * 100;
}

/// "12.5"
std::string Number(Length length);

/// Any text as character data: escaped as for a terminal, and the characters that mean something in XML.
std::string Escaped(std::string_view text);

struct Box {
    Length x = 0;
    Length y = 0;
    Length width = 0;
    Length height = 0;
};

/// `attributes` are the rest of them, written out.
std::string Rectangle(const Box& box, std::string_view attributes);

enum class Anchor { kStart, kMiddle, kEnd };

/// One line of text, escaped here.
std::string Line(Length x, Length y, Anchor anchor, std::string_view text, std::string_view attributes = "");

/// "<name>text</name>" on a line, with the text escaped.
std::string Element(std::string_view name, std::string_view text, std::string_view attributes = "");

} // namespace timeline::svg
