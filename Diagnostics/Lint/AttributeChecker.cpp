#include "Diagnostics/Lint/AttributeChecker.h"

#include <algorithm>
#include <utility>

#include "Diagnostics/Lint/AddressRules.h"
#include "Diagnostics/Lint/NumberRules.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

std::string Slots(int count)
{
    return count == 1 ? "the first attribute" : "the first " + std::to_string(count) + " attributes";
}

} // namespace

Problem AttributeChecker::UnknownName(const std::string& what, std::string_view name,
                                      const std::vector<std::string>& known, const std::vector<std::string>& close,
                                      Rule unknown, Rule misspelt)
{
    const std::string message = "unknown " + what + " " + QuotedShort(name);
    if (!close.empty()) {
        return {misspelt, message, JoinWithOr(close), "the TV ignores it"};
    }
    return {unknown, message, known.empty() ? "no " + what : JoinWithOr(known), "the TV ignores it"};
}

const std::vector<Judgement>& AttributeChecker::Check(const StartTag& tag)
{
    judgements_.assign(tag.AttributeCount(), {});
    if (tag.Kind() == Element::kUnknown) {
        return judgements_;
    }
    meant_.clear();
    for (std::size_t index = 0; index < tag.AttributeCount(); ++index) {
        const AttributeInfo* info = FindAttribute(tag.Info(), tag.AttributeName(index));
        if (info == nullptr) {
            CheckUnknown(tag, index);
        } else if (index >= static_cast<std::size_t>(tag.Info().slots)) {
            // The TV looks at a fixed number of attributes, from the first on.
            const bool isState = info->kind == ValueKind::kState;
            reporter_.Report(
                tag.NamePlace(index),
                {isState ? Rule::kStateNotFirst : Rule::kAttributeBeyondSlots,
                 std::string(info->name) + " is attribute " + std::to_string(index + 1) + " of " + NameOf(tag.Kind()),
                 std::string(info->name) + " within " + Slots(tag.Info().slots),
                 std::string("the TV never looks at it") + (isState ? " and marks the policy as in error" : "")});
            meant_.emplace_back(info->name);
        } else {
            CheckValue(tag, index, *info);
        }
    }
    CheckMissing(tag);
    return judgements_;
}

void AttributeChecker::CheckUnknown(const StartTag& tag, std::size_t index)
{
    const std::vector<std::string> known = AttributeNames(tag.Info());
    const std::vector<std::string> close = Suggest(tag.AttributeName(index), known);
    meant_.insert(meant_.end(), close.begin(), close.end());
    Problem problem = UnknownName("attribute", tag.AttributeName(index), known, close, Rule::kUnknownAttribute,
                                  Rule::kMisspeltAttribute);
    problem.message += " of " + NameOf(tag.Kind());
    reporter_.Report(tag.NamePlace(index), std::move(problem));
}

void AttributeChecker::CheckValue(const StartTag& tag, std::size_t index, const AttributeInfo& info)
{
    const std::string name(info.name);
    const std::string text = tag.AttributeValue(index);
    Judgement& judgement = judgements_[index];
    std::vector<Problem> problems;
    const auto take = [&problems](std::optional<Problem> problem) {
        if (problem) {
            problems.push_back(*std::move(problem));
        }
    };
    switch (info.kind) {
    case ValueKind::kText:
        break;
    case ValueKind::kState:
        if (text != "ok") {
            problems.push_back({Rule::kStateNotOk, "state " + QuotedShort(text) + " is not \"ok\"", "ok",
                                "the TV marks the policy as in error"});
        }
        break;
    case ValueKind::kInteger:
    case ValueKind::kCount:
    case ValueKind::kMaster:
    case ValueKind::kUnsigned:
        take(JudgeNumber(name, info.kind, text));
        // A negative number is odd, but read.
        judgement.isReadAsWritten = problems.empty() || problems.front().rule == Rule::kNegativeNumber;
        break;
    case ValueKind::kTime: {
        TimeVerdict verdict = JudgeTime(name, text);
        problems = std::move(verdict.problems);
        judgement.seconds = verdict.seconds;
        break;
    }
    case ValueKind::kDate:
        problems = JudgeDate(name, text, today_);
        break;
    case ValueKind::kAddress:
        take(JudgeAddress(name, text));
        break;
    case ValueKind::kSubnetMask:
        take(JudgeSubnetMask(name, text));
        break;
    }
    judgement.isFlawless = problems.empty();
    for (Problem& problem : problems) {
        reporter_.Report(tag.ValuePlace(index), std::move(problem));
    }
}

void AttributeChecker::CheckMissing(const StartTag& tag)
{
    // The other elements may leave out any attribute.
    if (tag.Kind() != Element::kRsp && tag.Kind() != Element::kSchedule && tag.Kind() != Element::kItem) {
        return;
    }
    for (const AttributeInfo& info : tag.Info().attributes) {
        const std::string name(info.name);
        const bool reported = std::find(meant_.begin(), meant_.end(), name) != meant_.end();
        if (tag.Find(name) || reported) {
            continue;
        }
        Problem problem = {Rule::kMissingAttribute, NameOf(tag.Kind()) + " has no " + name, name, ""};
        if (info.kind == ValueKind::kState) {
            problem.rule = Rule::kStateMissing;
            problem.expected = "state='ok' as the first attribute";
            problem.effect = "the TV marks the policy as in error";
        } else if (info.kind == ValueKind::kTime) {
            problem.effect = "the TV reads 00:00:00";
        } else {
            problem.effect = info.kind == ValueKind::kText ? "the TV reads an empty one" : "the TV reads 0";
        }
        reporter_.Report(tag.Whole(), std::move(problem));
    }
}

} // namespace lint
