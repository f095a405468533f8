#include "Diagnostics/Lint/ParseFailure.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <strings.h>

#include "Diagnostics/Text/Words.h"
#include "Platform/common/Utf8.h"

namespace lint {

namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr char32_t kByteOrderMark = 0xFEFF;
constexpr char32_t kNoBreakSpace = 0xA0;

/// What windows-1252 has for the bytes 80 to 9F; 0 for nothing. From A0 on it is as Unicode.
constexpr std::array<char32_t, 32> kWindows1252 = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                   0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

bool IsTypographicQuote(char32_t code)
{
    return (code >= 0x2018 && code <= 0x201F) || code == 0xAB || code == 0xBB || code == 0x2039 || code == 0x203A ||
           code == 0xB4 || code == '`' || (code >= 0x2032 && code <= 0x2036);
}

char32_t FromWindows1252(unsigned char byte)
{
    return byte < 0x80 || byte >= 0xA0 ? byte : kWindows1252[byte - 0x80U];
}

std::string Shown(char32_t code)
{
    std::string text;
    platform::AppendCodePoint(text, code);
    return Quoted(text);
}

std::string Hexadecimal(unsigned char byte)
{
    std::array<char, 3> text = {};
    std::snprintf(text.data(), text.size(), "%02X", static_cast<unsigned int>(byte));
    return text.data();
}

/// Where the parser stands in the markup that it was reading.
struct Context {
    bool inTag = false; ///< a start or end tag, or the XML declaration
    bool inComment = false;
    char quote = '\0';            ///< the quote that opened the value it is in
    bool afterValue = false;      ///< directly behind the quote that closed one
    std::string_view markup{};    ///< from the tag's "<" on
    std::string_view lastValue{}; ///< what the quotes hold that were closed last
};

/// Scans the markup before the place again, because the parser does not say what it was reading.
Context ContextOf(std::string_view before)
{
    Context context;
    const std::size_t comment = before.rfind("<!--");
    if (comment != std::string_view::npos && before.find("-->", comment + 4) == std::string_view::npos) {
        context.inComment = true;
        return context;
    }
    const std::size_t start = before.rfind('<');
    if (start == std::string_view::npos) {
        return context;
    }
    context.inTag = true;
    context.markup = before.substr(start);
    std::size_t valueStart = 0;
    for (std::size_t place = 0; place < context.markup.size(); ++place) {
        const char byte = context.markup[place];
        context.afterValue = context.quote != '\0' && byte == context.quote;
        if (context.afterValue) {
            context.lastValue = context.markup.substr(valueStart, place - valueStart);
            context.quote = '\0';
        } else if (context.quote != '\0') {
            continue;
        } else if (byte == '"' || byte == '\'') {
            context.quote = byte;
            valueStart = place + 1;
        } else if (byte == '>') {
            return {};
        }
    }
    return context;
}

/// Whether an "&" comes before the place, with nothing but a name in between.
bool FollowsAmpersand(std::string_view before)
{
    std::size_t place = before.size();
    while (place > 0 &&
           (std::isalnum(static_cast<unsigned char>(before[place - 1])) != 0 || before[place - 1] == '#')) {
        --place;
    }
    return place > 0 && before[place - 1] == '&';
}

bool EndsWithSign(std::string_view before)
{
    const std::size_t last = before.find_last_not_of(kSpace);
    return last != std::string_view::npos && before[last] == '=';
}

std::string TypographicQuote(char32_t code)
{
    return Shown(code) + " is a typographic quote; write straight ones: \" or '";
}

std::string DescribeByte(const ParseFailure& failure, const Context& context)
{
    const auto byte = static_cast<unsigned char>(failure.after.front());
    const bool isAscii = strcasecmp(failure.encoding.c_str(), "US-ASCII") == 0;
    const char32_t meant = FromWindows1252(byte);
    std::string text = "the byte " + Hexadecimal(byte) + " is not " + (isAscii ? "US-ASCII" : "UTF-8");
    if (meant != 0 && meant != kNoBreakSpace) {
        text += ": it is " + Shown(meant) + " in windows-1252";
    }
    const bool straight = context.inTag && context.quote == '\0' && IsTypographicQuote(meant);
    return text + (straight
                       ? "; write straight quotes, and save the document as UTF-8"
                       : "; save the document as UTF-8" + std::string(isAscii ? " and write encoding=\"UTF-8\"" : ""));
}

std::string DescribeControl(unsigned char byte)
{
    return "the control character " + Hexadecimal(byte) + " cannot stand in a document; delete it";
}

/// The first typographic quote in a text; 0 for none.
char32_t TypographicQuoteIn(std::string_view text)
{
    while (!text.empty()) {
        const platform::CodePoint character = platform::FirstCodePoint(text);
        if (IsTypographicQuote(character.value)) {
            return character.value;
        }
        text.remove_prefix(character.size == 0 ? 1 : character.size);
    }
    return 0;
}

std::string DescribeAfterValue(const Context& context, char32_t code)
{
    if (const char32_t quote = TypographicQuoteIn(context.lastValue); quote != 0) {
        return "a quote before this place is typographic: " + Shown(quote) + "; write straight ones: \" or '";
    }
    if (context.lastValue.find('=') != std::string_view::npos) {
        return "a quote is missing: the value before " + Shown(code) + " holds the next attribute";
    }
    return "a blank is missing before " + Shown(code);
}

/// The order matters: the more specific cause comes first.
std::string DescribeInTag(const ParseFailure& failure, const Context& context, char32_t code)
{
    const std::string_view markup = context.markup;
    if (context.quote != '\0' && code == '<') {
        return std::string("'<' in a value; write &lt;, or ") + context.quote + " where the value ends";
    }
    if (markup == "<" && code == '/') {
        return "an end tag that closes nothing; delete it";
    }
    if (markup == "<") {
        return "'<' begins no tag here; write &lt; for the character itself";
    }
    if (IsTypographicQuote(code)) {
        return TypographicQuote(code);
    }
    if (markup.substr(0, 2) == "<?") {
        return "this is no XML declaration; write <?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    }
    if (code == kNoBreakSpace) {
        return "a no-break space in a tag; write a plain one";
    }
    if (EndsWithSign(failure.before)) {
        return "a value must stand in quotes; write one before " + Shown(code) + " and one where the value ends";
    }
    if (code == '<') {
        return "the tag before '<' is not closed; write '>'";
    }
    if (context.afterValue) {
        return DescribeAfterValue(context, code);
    }
    if (code == '>' || code == '/') {
        return "the attribute before " + Shown(code) + " has no value; write =\"\" with the value in it";
    }
    return Shown(code) + " cannot stand here in a tag";
}

/// The parser's own text for the commonest error is "not well-formed (invalid token)".
std::string InWordsOfTheParser(XML_Error error)
{
    return error == XML_ERROR_INVALID_TOKEN ? "not well-formed: invalid token"
                                            : std::string("not well-formed: ") + XML_ErrorString(error);
}

} // namespace

std::string DescribeInvalidToken(const ParseFailure& failure)
{
    if (failure.after.empty()) {
        return InWordsOfTheParser(failure.error);
    }
    const Context context = ContextOf(failure.before);
    const auto byte = static_cast<unsigned char>(failure.after.front());
    const bool singleBytes = !failure.encoding.empty() && strcasecmp(failure.encoding.c_str(), "UTF-8") != 0;
    // In a document of single bytes, 80 to 9F are taken for windows-1252: ISO-8859-1 has only control
    // characters there.
    const platform::CodePoint character =
        singleBytes ? platform::CodePoint{FromWindows1252(byte), 1} : platform::FirstCodePoint(failure.after);
    const bool isAscii = strcasecmp(failure.encoding.c_str(), "US-ASCII") == 0;
    if (character.size == 0 || (isAscii && byte >= 0x80)) {
        return DescribeByte(failure, context);
    }
    if (character.value == 0xFFFE || character.value == 0xFFFF) {
        return "a code that is no character cannot stand in a document; delete it";
    }
    if (byte < 0x20 && kSpace.find(failure.after.front()) == std::string_view::npos) {
        return DescribeControl(byte);
    }
    if (character.value == kByteOrderMark) {
        return "a byte order mark inside the document; delete it";
    }
    if (FollowsAmpersand(failure.before)) {
        return "'&' begins no entity here; write &amp; for the character itself";
    }
    if (context.inComment) {
        return "two hyphens in a comment; write one, or --> where the comment ends";
    }
    if (context.inTag) {
        return DescribeInTag(failure, context, character.value);
    }
    if (failure.openElement.empty() && !failure.rootClosed) {
        return "text before the first tag; delete it";
    }
    if (character.value == '>' && failure.before.size() > 1 &&
        failure.before.substr(failure.before.size() - 2) == "]]") {
        return "']]>' in a text; write ]]&gt; for the characters themselves";
    }
    return InWordsOfTheParser(failure.error);
}

} // namespace lint
