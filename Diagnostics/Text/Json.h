#pragma once

#include <string>

#include <nlohmann/json.hpp>

/// What the commands print with --json. Members keep their order.
using Json = nlohmann::ordered_json;

constexpr int kJsonSchemaVersion = 1;
constexpr int kJsonIndent = 2;

/// Any text as one that JSON can hold: if it is no UTF-8, its odd bytes become "\xNN".
std::string Utf8(const std::string& text);

/// The same as a value; an empty text, which stands for an absent one, is null.
Json TextOrNull(const std::string& text);

/// `content`, an object whose texts are UTF-8, as a document of its own: the version of its schema
/// comes first. ASCII only, so that no terminal takes it for more than text.
std::string RenderJsonDocument(const Json& content);

/// The same on one line, for commands that print a document after each change.
std::string RenderJsonLine(const Json& content);
