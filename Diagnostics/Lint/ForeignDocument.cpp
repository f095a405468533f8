#include "Diagnostics/Lint/ForeignDocument.h"

#include <algorithm>
#include <cctype>

namespace lint {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kSpace = " \t\r\n";

struct Signature {
    std::string_view bytes;
    std::size_t offset;
    ForeignDocument document;
};

constexpr char kSaveAsText[] = "save it as plain text";
constexpr char kCopyAgain[] = "copy the right file";
constexpr char kUnpack[] = "unpack it";

constexpr Signature kSignatures[] = {
    {"PK\3\4"sv, 0, {"a ZIP archive or an office document", "unpack it, or save it as plain text"}},
    {"{\\rtf"sv, 0, {"an RTF document", kSaveAsText}},
    {"\xD0\xCF\x11\xE0"sv, 0, {"an office document", kSaveAsText}},
    {"%PDF"sv, 0, {"a PDF document", kCopyAgain}},
    {"\x1F\x8B"sv, 0, {"a gzip archive", kUnpack}},
    {"7z\xBC\xAF"sv, 0, {"a 7z archive", kUnpack}},
    {"\xFF\xD8\xFF"sv, 0, {"a JPEG picture", kCopyAgain}},
    {"\x89PNG"sv, 0, {"a PNG picture", kCopyAgain}},
    {"ftyp"sv, 4, {"a film", kCopyAgain}},
    // Two literals: in one, the E would be a third digit of the escape.
    {"\x7F"
     "ELF"sv,
     0,
     {"a program", kCopyAgain}},
};

bool StartsWithIgnoringCase(std::string_view text, std::string_view start)
{
    const auto lower = [](char letter) { return std::tolower(static_cast<unsigned char>(letter)); };
    return text.size() >= start.size() &&
           std::equal(start.begin(), start.end(), text.begin(),
                      [lower](char left, char right) { return lower(left) == lower(right); });
}

void SkipSpace(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
}

/// Skips markup from `start` to `end` and the space after it. False when the text does not begin so.
bool Skip(std::string_view& text, std::string_view start, std::string_view end)
{
    if (text.substr(0, start.size()) != start) {
        return false;
    }
    const std::size_t place = text.find(end);
    text.remove_prefix(place == std::string_view::npos ? text.size() : place + end.size());
    SkipSpace(text);
    return true;
}

std::string_view FirstMarkup(std::string_view head)
{
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (head.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        head.remove_prefix(kByteOrderMark.size());
    }
    SkipSpace(head);
    while (Skip(head, "<?", "?>") || Skip(head, "<!--", "-->")) {
    }
    return head;
}

bool IsHtml(std::string_view markup)
{
    static constexpr std::string_view kStarts[] = {"<!doctype html", "<html", "<head", "<body"};
    return std::any_of(std::begin(kStarts), std::end(kStarts),
                       [markup](std::string_view start) { return StartsWithIgnoringCase(markup, start); });
}

/// True when control characters other than white space are found. Zero bytes do not count: for the TV they
/// end a text.
bool HoldsBinaryData(std::string_view head)
{
    const auto isControl = [](char byte) {
        return byte != '\0' && static_cast<unsigned char>(byte) < 0x20 && kSpace.find(byte) == std::string_view::npos;
    };
    return !head.empty() && head.front() != '<' && std::any_of(head.begin(), head.end(), isControl);
}

} // namespace

ForeignDocument FindForeignDocument(std::string_view head)
{
    for (const Signature& signature : kSignatures) {
        if (head.size() > signature.offset &&
            head.substr(signature.offset, signature.bytes.size()) == signature.bytes) {
            return signature.document;
        }
    }
    const std::string_view markup = FirstMarkup(head);
    if (IsHtml(markup)) {
        return {"an HTML page, perhaps a server's error message", "fetch the file again"};
    }
    if (!markup.empty() && (markup.front() == '{' || markup.front() == '[')) {
        return {"JSON", kCopyAgain};
    }
    if (HoldsBinaryData(head)) {
        return {"no text", kCopyAgain};
    }
    return {};
}

const char* WideEncoding(std::string_view head)
{
    struct Head {
        std::string_view bytes;
        const char* encoding;
    };
    // UTF-32 first: two of its heads begin with one of UTF-16.
    static constexpr Head kHeads[] = {
        {"\xFF\xFE\0\0"sv, "UTF-32"}, {"\0\0\xFE\xFF"sv, "UTF-32"}, {"<\0\0\0"sv, "UTF-32"}, {"\0\0\0<"sv, "UTF-32"},
        {"\xFF\xFE"sv, "UTF-16"},     {"\xFE\xFF"sv, "UTF-16"},     {"<\0"sv, "UTF-16"},     {"\0<"sv, "UTF-16"},
    };
    const auto* const found = std::find_if(std::begin(kHeads), std::end(kHeads), [head](const Head& known) {
        return head.substr(0, known.bytes.size()) == known.bytes;
    });
    return found == std::end(kHeads) ? nullptr : found->encoding;
}

} // namespace lint
