#include "Diagnostics/Lint/ScheduleChecker.h"

#include <algorithm>
#include <utility>

#include "Diagnostics/Lint/NetworkChecker.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

bool IsTextElement(Element element)
{
    return element == Element::kName || element == Element::kSize || element == Element::kFormat;
}

bool IsBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

Problem Misplaced(const StartTag& tag, const std::string& where, const std::string& belongs)
{
    return {Rule::kMisplacedElement, NameOf(tag.Kind()) + (" " + where), belongs,
            "the TV reads it all the same, wherever it stands"};
}

Problem JudgeUnknown(const StartTag& tag)
{
    const std::vector<std::string> known = ElementNames();
    return AttributeChecker::UnknownName("element", tag.Name(), known, Suggest(tag.Name(), known),
                                         Rule::kUnknownElement, Rule::kMisspeltElement);
}

} // namespace

ScheduleChecker::ScheduleChecker(Reporter& reporter, const schedule::Day& today, Observer* observer)
    : reporter_(reporter),
      observer_(observer),
      attributes_(reporter, today),
      item_(reporter, observer != nullptr),
      period_(reporter),
      project_(reporter),
      openCounts_(VQMScheduleFormat::kElementCount),
      firstLines_(VQMScheduleFormat::kElementCount)
{
}

/// Follows the elements by their names wherever they stand, as the TV does; `CheckPlace` reports those that stand
/// in the wrong place.
void ScheduleChecker::Start(const StartTag& tag)
{
    if (open_.empty()) {
        root_ = reporter_.Kept(tag.Whole());
    }
    CheckPlace(tag);
    CheckRepeated(tag);
    const std::vector<Judgement>& values = attributes_.Check(tag);

    const bool inText = OpenTextElements() > 0;
    open_.push_back(
        {tag.Kind(), tag.Start().line, tag.Kind() == Element::kUnknown ? std::string(tag.Name()) : "", false});
    ++openCounts_[static_cast<std::size_t>(tag.Kind())];
    switch (tag.Kind()) {
    case Element::kProject:
        project_.Begin(tag, values);
        if (observer_ != nullptr) {
            observer_->OnProject(tag);
        }
        break;
    case Element::kSchedule:
        period_.Begin(tag, values);
        break;
    case Element::kItem:
        itemOffset_ = tag.Start().offset;
        item_.Begin(tag);
        if (OpenCount(Element::kSchedule) > 0) {
            period_.BeginItem(tag, values);
        }
        break;
    case Element::kName:
    case Element::kSize:
    case Element::kFormat:
        // Elsewhere it has been reported, and what the TV makes of it is not followed.
        if (!inText && OpenCount(Element::kItem) > 0) {
            item_.BeginChild(tag);
        }
        break;
    case Element::kRechInfo:
        CheckNetwork(tag, reporter_);
        break;
    case Element::kUnknown:
    case Element::kRsp:
    case Element::kPolicy:
        break;
    }
}

void ScheduleChecker::CheckPlace(const StartTag& tag)
{
    if (std::optional<Problem> problem = JudgePlace(tag)) {
        reporter_.Report(tag.Whole(), *std::move(problem));
    }
}

std::optional<Problem> ScheduleChecker::JudgePlace(const StartTag& tag) const
{
    if (OpenTextElements() > 0) {
        return Problem{Rule::kElementInText,
                       "element " + QuotedShort(tag.Name()) + " inside " + NameOf(open_.back().element), "text only",
                       "the TV puts texts and elements of this item in the wrong places"};
    }
    switch (tag.Kind()) {
    case Element::kUnknown:
        return JudgeUnknown(tag);
    case Element::kRsp:
        return open_.empty() ? std::nullopt
                             : std::optional<Problem>(Misplaced(tag, "inside the document", "rsp around everything"));
    case Element::kItem:
        return JudgeItemPlace(tag);
    case Element::kName:
    case Element::kSize:
    case Element::kFormat:
        return JudgeChildPlace(tag);
    default:
        return JudgeContainerPlace(tag);
    }
}

std::optional<Problem> ScheduleChecker::JudgeContainerPlace(const StartTag& tag) const
{
    if (tag.Kind() == Element::kSchedule && OpenCount(Element::kSchedule) > 0) {
        return Problem{Rule::kScheduleInSchedule, "schedule inside a schedule", "one schedule after the other",
                       "the TV gives the inner one the items so far and the outer one no times"};
    }
    if (open_.empty()) {
        return Misplaced(tag, "is the outermost element", "rsp around everything");
    }
    const Element parent = open_.back().element;
    if (parent == Element::kRsp || parent == Element::kUnknown) {
        return std::nullopt;
    }
    return Misplaced(tag, "inside " + NameOf(parent), NameOf(tag.Kind()) + " inside rsp");
}

std::optional<Problem> ScheduleChecker::JudgeItemPlace(const StartTag& tag) const
{
    if (OpenCount(Element::kItem) > 0) {
        return Problem{Rule::kItemInItem, "item inside an item", "one item after the other",
                       "the TV makes one item of both and an empty one"};
    }
    if (OpenCount(Element::kSchedule) == 0) {
        return Problem{Rule::kItemOutsideSchedule, "item outside a schedule", "item inside schedule",
                       "the TV adds it to the next schedule that ends, or to none"};
    }
    const Element parent = open_.back().element;
    if (parent == Element::kSchedule || parent == Element::kUnknown) {
        return std::nullopt;
    }
    return Misplaced(tag, "inside " + NameOf(parent), "item inside schedule");
}

std::optional<Problem> ScheduleChecker::JudgeChildPlace(const StartTag& tag) const
{
    const std::string name = NameOf(tag.Kind());
    if (OpenCount(Element::kItem) == 0) {
        return Problem{Rule::kChildOutsideItem, name + " outside an item", name + " inside item",
                       "the TV gives it to the next item that ends, or to none"};
    }
    const Element parent = open_.back().element;
    if (parent == Element::kItem || parent == Element::kUnknown) {
        return std::nullopt;
    }
    return Misplaced(tag, "inside " + NameOf(parent), name + " inside item");
}

void ScheduleChecker::CheckRepeated(const StartTag& tag)
{
    std::uint64_t& first = firstLines_[static_cast<std::size_t>(tag.Kind())];
    if (first == 0) {
        first = tag.Start().line;
        return;
    }
    if (tag.Kind() == Element::kRsp || tag.Kind() == Element::kPolicy || tag.Kind() == Element::kProject ||
        tag.Kind() == Element::kRechInfo) {
        reporter_.Report(tag.Whole(),
                         {Rule::kRepeatedElement,
                          "a second " + NameOf(tag.Kind()) + "; the first is on line " + std::to_string(first),
                          "one " + NameOf(tag.Kind()), "the TV takes of each attribute the last value"});
    }
}

int ScheduleChecker::OpenTextElements() const
{
    return OpenCount(Element::kName) + OpenCount(Element::kSize) + OpenCount(Element::kFormat);
}

/// Whether the innermost element is a name, size or format of an item, and not inside another one: only then
/// `item_` takes its text and its end.
bool ScheduleChecker::IsReadChild() const
{
    return !open_.empty() && IsTextElement(open_.back().element) && OpenTextElements() == 1 &&
           OpenCount(Element::kItem) > 0;
}

void ScheduleChecker::End(std::uint64_t offset)
{
    if (IsReadChild()) {
        item_.EndChild(offset);
    }
    const Element element = open_.back().element;
    if (element == Element::kItem && itemOffset_) {
        const ItemFacts& facts = item_.End();
        project_.AddItem(facts.size, facts.sizeIsSure);
        if (observer_ != nullptr) {
            observer_->OnItem(facts);
        }
        if (OpenCount(Element::kSchedule) > 0) {
            period_.EndItem(facts);
        }
        itemOffset_.reset();
    } else if (element == Element::kItem) {
        project_.AddItem(0, false); // an item inside this one took what it had
    } else if (element == Element::kSchedule) {
        period_.End();
    }
    --openCounts_[static_cast<std::size_t>(element)];
    open_.pop_back();
}

void ScheduleChecker::Text(std::string_view text, std::uint64_t offset)
{
    if (IsReadChild()) {
        item_.Text(text, offset);
        return;
    }
    // An element that is unknown or in the wrong place has been reported, and so has an earlier text.
    const bool isReported =
        open_.empty() || open_.back().strayText || open_.back().element == Element::kUnknown || OpenTextElements() > 0;
    if (isReported || IsBlank(text)) {
        return;
    }
    open_.back().strayText = true;
    const std::size_t blanks = text.find_first_not_of(" \t\r\n");
    const Position position = reporter_.Window().PositionAt(offset + blanks);
    const std::string where = NameOf(open_.back().element);
    const std::string_view shown = text.substr(blanks, text.find_last_not_of(" \t\r\n") + 1 - blanks);
    reporter_.Report({position, shown.size()},
                     {Rule::kStrayText, "text " + QuotedShort(shown) + " directly inside " + where,
                      "text only inside name, size and format", "the TV ignores it"});
}

void ScheduleChecker::Finish(bool isWhole)
{
    const auto lineOf = [this](Element element) { return firstLines_[static_cast<std::size_t>(element)]; };
    if (lineOf(Element::kRsp) == 0) {
        reporter_.Report(root_, {Rule::kStateMissing, "there is no rsp with a state",
                                 "<rsp state='ok'> around everything", "the TV marks the policy as in error"});
    }
    if (lineOf(Element::kSchedule) == 0) {
        reporter_.Report(root_, {Rule::kNoSchedule, "there is no schedule", "at least one schedule",
                                 "the TV finds its content complete and plays nothing"});
    }
    project_.Finish(isWhole);
}

std::uint64_t ScheduleChecker::NeededFrom(std::uint64_t current) const
{
    return itemOffset_ ? std::min(*itemOffset_, current) : current;
}

} // namespace lint
