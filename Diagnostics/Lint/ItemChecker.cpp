#include "Diagnostics/Lint/ItemChecker.h"

#include <strings.h>

#include "Diagnostics/Lint/NumberRules.h"
#include "Diagnostics/Lint/TvConversions.h"
#include "Diagnostics/Text/Normalization.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

bool EndsWithExtension(const std::string& name, const std::string& format)
{
    const std::size_t length = format.size() + 1;
    return name.size() >= length && name[name.size() - length] == '.' &&
           strcasecmp(name.c_str() + name.size() - format.size(), format.c_str()) == 0;
}

/// `text` must not be empty.
bool HasOuterOrUnusualSpace(const std::string& text)
{
    return text.find_first_of("\t\r\n\v\f") != std::string::npos || text.front() == ' ' || text.back() == ' ';
}

} // namespace

void ItemChecker::Child::Clear()
{
    count = 0;
    hasText = false;
    text.clear();
}

void ItemChecker::Begin(const StartTag& item)
{
    item_ = item.Whole();
    open_ = Element::kUnknown;
    name_.Clear();
    size_.Clear();
    format_.Clear();
    formatFirst_ = false;
    facts_.file.clear();
    facts_.size = 0;
    facts_.sizeIsSure = false;
}

ItemChecker::Child& ItemChecker::ChildOf(Element element)
{
    switch (element) {
    case Element::kName:
        return name_;
    case Element::kSize:
        return size_;
    default:
        return format_;
    }
}

void ItemChecker::BeginChild(const StartTag& child)
{
    open_ = child.Kind();
    Child& known = ChildOf(open_);
    ++known.count;
    known.tag = child.Whole();
    known.hasText = false;
    if (known.count > 1) {
        reporter_.Report(child.Whole(),
                         {Rule::kRepeatedChild, "a second " + NameOf(child.Kind()) + " in the item",
                          "one " + NameOf(child.Kind()),
                          open_ == Element::kSize ? "the TV takes the last one" : "the TV puts the texts together"});
    }
    if (open_ == Element::kName && known.count == 1) {
        formatFirst_ = format_.count > 0;
    } else if (open_ == Element::kSize) {
        known.text.clear();
        sizePieces_ = 0;
        lastPiece_.clear();
    }
}

void ItemChecker::Text(std::string_view text, std::uint64_t offset)
{
    Child& child = ChildOf(open_);
    if (!child.hasText) {
        child.hasText = true;
        child.textPlace = {reporter_.Window().Advance(offset), text.size()};
    }
    child.text += text;
    if (open_ == Element::kName) {
        facts_.file += text;
    } else if (open_ == Element::kSize) {
        // The TV reads each piece as a whole number, and the last one counts.
        ++sizePieces_;
        lastPiece_ = text;
        facts_.size = tv::Unsigned(lastPiece_);
    }
}

void ItemChecker::EndChild(std::uint64_t endTagOffset)
{
    Child& child = ChildOf(open_);
    if (child.hasText && endTagOffset > child.textPlace.position.offset) {
        child.textPlace.size = endTagOffset - child.textPlace.position.offset;
    }
    if (open_ == Element::kSize) {
        CheckSize();
        if (keepsPlaces_) {
            facts_.sizePlace = TextBetweenTags(child, endTagOffset);
        }
    } else if (open_ == Element::kFormat) {
        // As the TV does it: the extension joins what the name has so far, when the format ends.
        facts_.file += '.';
        facts_.file += child.text;
    }
    open_ = Element::kUnknown;
}

/// The range has bytes, which an edit may replace, only where plain text stands between the tags: no
/// comment, no section, nothing out of an entity.
Range ItemChecker::TextBetweenTags(const Child& child, std::uint64_t endTagOffset) const
{
    const DocumentWindow& window = reporter_.Window();
    const std::uint64_t begin = child.tag.position.offset + child.tag.size;
    const std::string_view tag = window.View(child.tag.position.offset, child.tag.size);
    const bool hasTags = tag.size() == child.tag.size && tag.substr(0, 1) == "<" && tag.substr(tag.size() - 2) != "/>";
    if (!hasTags || endTagOffset < begin) {
        return child.tag;
    }
    Range range = {window.PositionAt(begin, child.tag.position), endTagOffset - begin};
    const std::string_view bytes = window.View(begin, range.size);
    if (bytes.size() == range.size && bytes.find('<') == std::string_view::npos) {
        range.bytes = bytes;
    }
    return range;
}

void ItemChecker::CheckSize()
{
    if (sizePieces_ > 1) {
        reporter_.Report(
            size_.Place(),
            {Rule::kSizeInPieces,
             "size " + QuotedShort(size_.text) + " comes in " + std::to_string(sizePieces_) + " pieces",
             "digits only, without a line break, comment, entity or section between them",
             "the TV takes the last piece " + QuotedShort(lastPiece_) + ": " + std::to_string(facts_.size)});
    } else if (std::optional<Problem> problem = JudgeNumber("size", ValueKind::kUnsigned, lastPiece_)) {
        reporter_.Report(size_.Place(), *std::move(problem));
    } else if (facts_.size == 0) {
        reporter_.Report(size_.Place(),
                         {Rule::kSizeZero, "size " + QuotedShort(lastPiece_) + " is 0", "the size of the file in bytes",
                          "the TV counts the file as present while it is missing"});
    } else {
        facts_.sizeIsSure = size_.count == 1;
    }
}

std::string ItemChecker::Looks() const
{
    return "the TV looks for the file " + QuotedShort(facts_.file);
}

const ItemFacts& ItemChecker::End()
{
    facts_.hasName = name_.count > 0;
    facts_.hasSize = size_.count > 0;
    facts_.filePlace = name_.Place();
    CheckChildren();
    CheckFormat();
    if (name_.count > 0) {
        if (formatFirst_) {
            reporter_.Report(
                name_.tag, {Rule::kFormatBeforeName, "the name comes after the format", "name before format", Looks()});
        }
        if (name_.text.empty()) {
            reporter_.Report(name_.Place(),
                             {Rule::kEmptyName, "the name is empty", "the file's name without extension", Looks()});
        } else {
            CheckWhiteSpace("name", name_);
            CheckNormalization();
        }
        if (name_.text.find_first_of("/\\") != std::string::npos) {
            reporter_.Report(name_.Place(),
                             {Rule::kPathSeparatorInName, "name " + QuotedShort(name_.text) + " has a path separator",
                              "a name within the media directory", Looks()});
        }
        if (!format_.text.empty() && EndsWithExtension(name_.text, format_.text)) {
            reporter_.Report(name_.Place(), {Rule::kExtensionTwice,
                                             "name " + QuotedShort(name_.text) + " ends with the format already",
                                             "the name without extension", Looks()});
        }
    }
    return facts_;
}

void ItemChecker::CheckChildren()
{
    if (name_.count > 0 && size_.count > 0 && format_.count > 0) {
        return;
    }
    const auto missing = [this](const Child& child, const char* name, const std::string& effect) {
        if (child.count == 0) {
            reporter_.Report(item_, {Rule::kMissingChild, std::string("the item has no ") + name, name, effect});
        }
    };
    missing(name_, "name", Looks());
    missing(size_, "size", "the TV reads 0 and counts the file as present while it is missing");
    missing(format_, "format", Looks());
}

void ItemChecker::CheckFormat()
{
    if (format_.count == 0) {
        return;
    }
    if (format_.text.empty()) {
        reporter_.Report(format_.Place(), {Rule::kEmptyFormat, "the format is empty", "the file's extension", Looks()});
        return;
    }
    CheckWhiteSpace("format", format_);
    if (format_.text.front() == '.') {
        reporter_.Report(format_.Place(),
                         {Rule::kDotInFormat, "format " + QuotedShort(format_.text) + " begins with a dot",
                          "the extension without its dot", Looks()});
    }
    if (format_.text.find_first_of("/\\") != std::string::npos) {
        reporter_.Report(format_.Place(),
                         {Rule::kPathSeparatorInName, "format " + QuotedShort(format_.text) + " has a path separator",
                          "the file's extension", Looks()});
    }
}

void ItemChecker::CheckNormalization()
{
    if (const std::optional<MixedForms> mixed = FindMixedForms(name_.text)) {
        reporter_.Report(name_.Place(),
                         {Rule::kMixedNormalization,
                          "name " + QuotedShort(name_.text) + " writes " + Quoted(mixed->composed) +
                              " as one character, but " + Quoted(mixed->separate) + " as a letter and an accent",
                          "one way for all letters, that of the file's own name", Looks()});
    }
}

void ItemChecker::CheckWhiteSpace(const char* what, const Child& child)
{
    if (HasOuterOrUnusualSpace(child.text)) {
        reporter_.Report(child.Place(), {Rule::kWhiteSpaceInName,
                                         std::string(what) + " " + QuotedShort(child.text) +
                                             " has white space around it or line breaks or tabs in it",
                                         std::string("the ") + what + " alone between its tags", Looks()});
    } else if (child.text.find(' ') != std::string::npos) {
        reporter_.Report(child.Place(),
                         {Rule::kBlankInName, std::string(what) + " " + QuotedShort(child.text) + " has a blank in it",
                          "no blank, unless the file has it too", Looks()});
    }
}

} // namespace lint
