#include "Diagnostics/Lint/ParseFailure.h"

#include <algorithm>
#include <cctype>

#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kDeclaration = "<?xml";

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

/// A name at the beginning of `text`.
std::string_view NameAt(std::string_view text)
{
    return text.substr(0, text.find_first_of(" \t\r\n=<>/\"'"));
}

std::string Open(const ParseFailure& failure)
{
    return QuotedShort(failure.openElement) + " of line " + std::to_string(failure.openLine);
}

std::string DescribeEmpty(const ParseFailure& failure)
{
    return failure.endedAtNul ? "the file begins with a zero byte, where a text ends for the TV; copy it again"
                              : "the document is empty; copy it again";
}

std::string DescribeEnd(const ParseFailure& failure)
{
    const std::string ends = failure.endedAtNul ? "a zero byte ends the document" : "the document ends";
    if (failure.openElement.empty()) {
        return ends + " before its first element; copy it again";
    }
    return ends + " in the middle: " + Open(failure) + " is not closed; copy it again, or write what is missing";
}

std::string DescribeUnclosedToken(const ParseFailure& failure)
{
    if (StartsWith(failure.after, "<!--")) {
        return "the comment that begins here has no end; write -->, or copy the document again if it was cut off";
    }
    if (failure.error == XML_ERROR_UNCLOSED_CDATA_SECTION) {
        return "a section that begins with <![CDATA[ has no end; write ]]>, or copy the document again if it was cut "
               "off";
    }
    return std::string(failure.endedAtNul ? "a zero byte ends the document" : "the document ends") +
           " in the middle, inside what begins here; copy it again";
}

std::string DescribeMismatch(const ParseFailure& failure)
{
    const std::string name(NameAt(failure.after));
    const std::string closing = "</" + failure.openElement + ">";
    const bool sameLetters =
        name.size() == failure.openElement.size() &&
        std::equal(name.begin(), name.end(), failure.openElement.begin(), [](char left, char right) {
            return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
        });
    if (sameLetters) {
        return QuotedShort("</" + name + ">") + " does not close " + Open(failure) +
               ", for upper and lower case count; write " + closing;
    }
    return QuotedShort("</" + name + ">") + " stands here, but " + Open(failure) + " is not closed yet; write " +
           closing + " before it";
}

bool BeginsDocument(std::string_view text)
{
    return StartsWith(text, kDeclaration) ||
           (text.size() > 1 && text.front() == '<' &&
            (std::isalpha(static_cast<unsigned char>(text[1])) != 0 || text[1] == '!'));
}

std::string DescribeRest(const ParseFailure& failure)
{
    if (BeginsDocument(failure.after)) {
        return "a second document begins here, after the end of the first; keep one of them";
    }
    if (StartsWith(failure.after, "</")) {
        return QuotedShort("</" + std::string(NameAt(failure.after.substr(2))) + ">") +
               " closes nothing: the document has ended before it; delete it";
    }
    return "text after the end of the document; delete it";
}

std::string DescribeLateDeclaration(const ParseFailure& failure)
{
    if (failure.rootClosed || !failure.openElement.empty()) {
        return "a second document begins here; keep one of them";
    }
    std::string_view before = failure.before;
    if (StartsWith(before, kByteOrderMark)) {
        before.remove_prefix(kByteOrderMark.size());
    }
    const std::string first = "'<?xml' must be the first thing in the file; delete ";
    if (before.find_first_not_of(kSpace) != std::string_view::npos) {
        return first + "what stands before it";
    }
    const auto lines = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    if (lines == 0) {
        return first + "the blanks before it";
    }
    return first + (lines == 1 ? "the empty line" : "the " + std::to_string(lines) + " empty lines") + " before it";
}

std::string DescribeEncoding(const ParseFailure& failure)
{
    const std::string declared = "the document says that its encoding is " + QuotedShort(failure.encoding);
    if (failure.error == XML_ERROR_INCORRECT_ENCODING) {
        return declared + ", and it is not; save it as UTF-8 and write encoding=\"UTF-8\"";
    }
    return declared + ", which the TV does not know; save it as UTF-8 and write encoding=\"UTF-8\"";
}

/// The reference at the place: "&nbsp;".
std::string Reference(const ParseFailure& failure)
{
    const std::size_t end = failure.after.find(';');
    return QuotedShort(failure.after.substr(0, end == std::string_view::npos ? end : end + 1));
}

} // namespace

std::string DescribeParseFailure(const ParseFailure& failure)
{
    if (failure.before.empty() && failure.after.empty()) {
        return DescribeEmpty(failure);
    }
    switch (failure.error) {
    case XML_ERROR_NO_ELEMENTS:
        return DescribeEnd(failure);
    case XML_ERROR_UNCLOSED_TOKEN:
    case XML_ERROR_UNCLOSED_CDATA_SECTION:
    case XML_ERROR_PARTIAL_CHAR:
        return DescribeUnclosedToken(failure);
    case XML_ERROR_TAG_MISMATCH:
        return DescribeMismatch(failure);
    case XML_ERROR_DUPLICATE_ATTRIBUTE:
        return "a second attribute " + QuotedShort(NameAt(failure.after)) + " in the same tag; delete one of them";
    case XML_ERROR_JUNK_AFTER_DOC_ELEMENT:
        return DescribeRest(failure);
    case XML_ERROR_UNDEFINED_ENTITY:
        return "the TV does not know " + Reference(failure) + "; write the character itself, or &amp; for a plain '&'";
    case XML_ERROR_BAD_CHAR_REF:
        return Reference(failure) + " names no character that a document may hold; delete it";
    case XML_ERROR_MISPLACED_XML_PI:
        return DescribeLateDeclaration(failure);
    case XML_ERROR_UNKNOWN_ENCODING:
    case XML_ERROR_INCORRECT_ENCODING:
        return DescribeEncoding(failure);
    default:
        return DescribeInvalidToken(failure);
    }
}

} // namespace lint
