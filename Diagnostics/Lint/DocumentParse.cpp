#include "Diagnostics/Lint/DocumentParse.h"
#include "Diagnostics/Text/Words.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <strings.h>
#include <utility>

#include "Diagnostics/Lint/ForeignDocument.h"
#include "Diagnostics/Lint/ParseFailure.h"
#include "Diagnostics/Lint/ParserPlace.h"

namespace lint {

namespace {

/// Bytes that one step of the parser takes, unless a token is longer.
constexpr std::size_t kPiece = 262144;

/// A piece that grows to this size without a "<" is cut anywhere.
constexpr std::size_t kMaxPiece = 67108864;

/// Of an item that is longer than this, the places of its beginning are given up.
constexpr std::uint64_t kMaxKept = 1048576;

constexpr std::string_view kDoctype = "<!DOCTYPE";

constexpr char kMisread[] = "the TV takes each character beyond ASCII for two or more others";
constexpr char kRejects[] = "the TV rejects the whole document and has no schedule";

} // namespace

DocumentParse::DocumentParse(DocumentReader& reader, FindingList& findings, const Options& options)
    : reader_(reader),
      maxBytes_(options.maxBytes),
      reporter_(window_, findings),
      checker_(reporter_, options.today, options.observer),
      parser_(XML_ParserCreate(options.asUtf8 ? "UTF-8" : nullptr)),
      piece_(kPiece),
      asUtf8_(options.asUtf8)
{
    if (parser_ == nullptr) {
        throw std::bad_alloc();
    }
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser_.get(), OnText);
    XML_SetStartDoctypeDeclHandler(parser_.get(), OnDoctype);
    XML_SetXmlDeclHandler(parser_.get(), OnDeclaration);
}

void DocumentParse::Begin()
{
    reader_.ReadUpTo(window_.Bytes(), kPiece);
}

void DocumentParse::Run()
{
    const bool wellFormed = ParseAll();
    if (thrown_ != nullptr) {
        std::rethrow_exception(thrown_);
    }
    if (parsed_ > maxBytes_) {
        ReportTooLarge();
    } else if (wellFormed) {
        checker_.Finish(!reader_.HasTextAfterNul());
        if (declared_ && utf8_.IsUtf8() && utf8_.HasWideCharacters()) {
            ReportEncoding(false);
        }
    } else if (declared_ && WouldBeUtf8()) {
        ReportEncoding(true);
    } else {
        ReportNotWellFormed();
    }
}

/// Each round reads a piece, and beyond it what a snippet may show; parses up to the last "<" of the piece;
/// and forgets what no finding can need any more.
bool DocumentParse::ParseAll()
{
    while (true) {
        const auto unparsed = static_cast<std::size_t>(parsed_ - window_.Begin());
        reader_.ReadUpTo(window_.Bytes(), unparsed + piece_ + DocumentWindow::kSnippetReach);
        if (window_.End() > maxBytes_) {
            parsed_ = window_.End();
            return false;
        }
        if (reader_.AtEnd()) {
            return ParseTo(window_.End(), true);
        }
        const std::uint64_t end = PieceEnd();
        const std::uint64_t before = Offset();
        if (!ParseTo(end, false)) {
            return false;
        }
        // The parser scans an unfinished token from its start at each step, so a long one gets longer steps.
        piece_ = Offset() > before ? kPiece : std::min(2 * piece_, kMaxPiece);
        const std::uint64_t current = window_.Advance(std::min(Offset(), parsed_)).offset;
        const std::uint64_t needed = checker_.NeededFrom(current);
        window_.Discard(current - needed > kMaxKept ? current : needed);
    }
}

/// The last "<" that has a snippet's reach behind it.
std::uint64_t DocumentParse::PieceEnd() const
{
    const std::uint64_t limit = window_.End() - DocumentWindow::kSnippetReach;
    const std::string_view unparsed = window_.View(parsed_, limit - parsed_);
    const std::size_t last = unparsed.rfind('<');
    if (last == std::string_view::npos || last == 0) {
        return piece_ < kMaxPiece ? parsed_ : limit;
    }
    return parsed_ + last;
}

bool DocumentParse::ParseTo(std::uint64_t end, bool isFinal)
{
    const std::string_view bytes = window_.View(parsed_, end - parsed_);
    parsed_ += bytes.size();
    const XML_Status status =
        XML_Parse(parser_.get(), bytes.data(), static_cast<int>(bytes.size()), isFinal ? XML_TRUE : XML_FALSE);
    if (declared_) {
        utf8_.Add(bytes);
    }
    return status != XML_STATUS_ERROR;
}

/// The offset that the parser has reached; 0 before its first event.
std::uint64_t DocumentParse::Offset() const
{
    const std::int64_t index = ByteIndex(parser_.get());
    return index < 0 ? 0 : static_cast<std::uint64_t>(index);
}

/// Runs the body of a handler. An exception must not pass through the parser's C code: it stops the parser,
/// and `Run` throws it again.
template <typename Action>
void DocumentParse::Guarded(Action action)
{
    if (thrown_ != nullptr) {
        return;
    }
    try {
        action();
    } catch (...) {
        thrown_ = std::current_exception();
        XML_StopParser(parser_.get(), XML_FALSE);
    }
}

void DocumentParse::OnStart(void* self, const char* name, const char** attributes)
{
    auto& parse = *static_cast<DocumentParse*>(self);
    parse.Guarded([&] {
        const auto size = static_cast<std::uint64_t>(ByteCount(parse.parser_.get()));
        const Position position = parse.window_.Advance(parse.Offset());
        parse.rootSeen_ = true;
        parse.checker_.Start(StartTag(parse.window_, name, attributes, position, size));
    });
}

void DocumentParse::OnEnd(void* self, const char* /*name*/)
{
    auto& parse = *static_cast<DocumentParse*>(self);
    parse.Guarded([&] { parse.checker_.End(parse.Offset()); });
}

void DocumentParse::OnText(void* self, const char* text, int size)
{
    auto& parse = *static_cast<DocumentParse*>(self);
    parse.Guarded([&] { parse.checker_.Text(std::string_view(text, static_cast<std::size_t>(size)), parse.Offset()); });
}

void DocumentParse::OnDoctype(void* self, const char* name, const char* /*systemId*/, const char* /*publicId*/,
                              int /*hasSubset*/)
{
    auto& parse = *static_cast<DocumentParse*>(self);
    parse.Guarded([&] {
        // The parser reports the declaration from a place after its beginning: look backwards for that.
        const std::uint64_t begin = parse.window_.Begin();
        const std::size_t place = parse.window_.View(begin, parse.Offset() - begin).rfind(kDoctype);
        const Position position =
            parse.window_.PositionAt(place == std::string_view::npos ? parse.Offset() : begin + place);
        parse.reporter_.Report({position, kDoctype.size()},
                               {Rule::kDoctype, "a document type declaration for " + QuotedShort(name),
                                "a document without one", "the TV leaves out entities that it would have to load"});
    });
}

void DocumentParse::OnDeclaration(void* self, const char* /*version*/, const char* encoding, int /*standalone*/)
{
    auto& parse = *static_cast<DocumentParse*>(self);
    if (encoding == nullptr || parse.asUtf8_) {
        return;
    }
    parse.Guarded([&] { parse.encoding_ = encoding; });
    if (strcasecmp(encoding, "UTF-8") == 0) {
        return;
    }
    parse.Guarded([&parse, encoding] {
        const std::uint64_t begin = parse.Offset();
        const std::string_view declaration = parse.window_.View(begin, parse.window_.End() - begin);
        const std::string_view named = declaration.substr(0, declaration.find("?>"));
        const std::size_t place = named.find(encoding, std::min(named.find("encoding"), named.size()));
        if (place != std::string_view::npos) {
            const std::size_t size = std::string_view(encoding).size();
            Range range = parse.reporter_.Kept({parse.window_.PositionAt(begin + place), size});
            range.bytes = encoding;
            parse.declared_ = range;
        }
    });
    parse.window_.SetSingleByteCharacters();
}

/// Whether the parser has failed because of the declared encoding, while the document is in UTF-8.
bool DocumentParse::WouldBeUtf8()
{
    const XML_Error error = XML_GetErrorCode(parser_.get());
    const std::string_view place = window_.View(Offset(), 1);
    // The other errors are about the encoding as such. This one is a byte beyond ASCII in declared US-ASCII.
    const bool isWideByte = error == XML_ERROR_INVALID_TOKEN && !place.empty() && !IsUtf8(place);
    if (error != XML_ERROR_UNKNOWN_ENCODING && error != XML_ERROR_INCORRECT_ENCODING && !isWideByte) {
        return false;
    }
    Utf8Check check = utf8_;
    check.Add(window_.View(parsed_, window_.End() - parsed_));
    std::uint64_t read = window_.End();
    for (std::string rest; check.MayBeUtf8() && !reader_.AtEnd() && read <= maxBytes_; rest.clear()) {
        reader_.ReadUpTo(rest, kPiece);
        check.Add(rest);
        read += rest.size();
    }
    return check.IsUtf8();
}

void DocumentParse::ReportEncoding(bool isRejected)
{
    reporter_.Report(*declared_,
                     {Rule::kEncodingDeclaredWrongly,
                      "the document declares " + QuotedShort(*declared_->bytes) + " and is written in UTF-8", "UTF-8",
                      isRejected ? kRejects : kMisread, "UTF-8"});
}

void DocumentParse::ReportNotWellFormed()
{
    if (const ForeignDocument foreign = FindForeignDocument(reader_.Head()); foreign.kind != nullptr) {
        ReportAtStart({Rule::kNotWellFormed, std::string("the file holds ") + foreign.kind + "; " + foreign.advice, "",
                       kRejects});
        return;
    }
    const std::uint64_t offset = std::min(Offset(), window_.End());
    ParseFailure failure;
    failure.error = XML_GetErrorCode(parser_.get());
    failure.before = window_.View(window_.Begin(), offset - window_.Begin());
    failure.after = window_.View(offset, window_.End() - offset);
    failure.encoding = encoding_;
    const ScheduleChecker::Open* const open = checker_.Innermost();
    if (open != nullptr) {
        failure.openElement = open->element == Element::kUnknown ? open->name : NameOf(open->element);
        failure.openLine = open->line;
    }
    failure.rootClosed = rootSeen_ && open == nullptr;
    failure.endedAtNul = reader_.EndedAtNul();
    reporter_.Report({window_.Advance(offset), 0}, {Rule::kNotWellFormed, DescribeParseFailure(failure), "", kRejects});
}

void DocumentParse::ReportTooLarge()
{
    ReportAtStart({Rule::kTooLarge, "the document has more than " + std::to_string(maxBytes_) + " bytes",
                   "a document up to that size", kRejects});
}

void DocumentParse::ReportAtStart(Problem problem)
{
    reporter_.Report({Position(), 0}, std::move(problem));
}

void DocumentParse::ReportAtEnd(Problem problem)
{
    reporter_.Report({window_.Advance(window_.End()), 0}, std::move(problem));
}

} // namespace lint
