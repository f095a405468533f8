#include "Diagnostics/Lint/Rule.h"

namespace lint {

namespace {

struct Entry {
    const char* name;
    Severity severity;
};

/// In the order of the enumeration.
constexpr Entry kRules[] = {
    {"not-well-formed", Severity::kError},
    {"unreadable-encoding", Severity::kError},
    {"encoding-declared-wrongly", Severity::kError},
    {"text-after-nul", Severity::kError},
    {"too-large", Severity::kError},
    {"doctype", Severity::kWarning},
    {"state-missing", Severity::kError},
    {"state-not-first", Severity::kError},
    {"state-not-ok", Severity::kError},
    {"no-schedule", Severity::kWarning},
    {"no-items", Severity::kWarning},
    {"unknown-element", Severity::kWarning},
    {"misspelt-element", Severity::kError},
    {"misplaced-element", Severity::kWarning},
    {"repeated-element", Severity::kWarning},
    {"unknown-attribute", Severity::kWarning},
    {"misspelt-attribute", Severity::kError},
    {"missing-attribute", Severity::kWarning},
    {"attribute-beyond-slots", Severity::kError},
    {"schedule-in-schedule", Severity::kError},
    {"item-outside-schedule", Severity::kError},
    {"item-in-item", Severity::kError},
    {"child-outside-item", Severity::kError},
    {"missing-child", Severity::kWarning},
    {"repeated-child", Severity::kError},
    {"element-in-text", Severity::kError},
    {"format-before-name", Severity::kError},
    {"stray-text", Severity::kWarning},
    {"time-malformed", Severity::kError},
    {"time-without-seconds", Severity::kError},
    {"time-not-digits", Severity::kError},
    {"time-out-of-range", Severity::kError},
    {"time-after-midnight", Severity::kWarning},
    {"hour-24", Severity::kNote},
    {"time-style", Severity::kNote},
    {"start-not-before-end", Severity::kError},
    {"overlapping-periods", Severity::kWarning},
    {"date-not-year-month-day", Severity::kError},
    {"impossible-date", Severity::kError},
    {"date-style", Severity::kNote},
    {"expired", Severity::kWarning},
    {"number-not-digits", Severity::kError},
    {"number-wraps", Severity::kError},
    {"negative-number", Severity::kWarning},
    {"size-in-pieces", Severity::kError},
    {"size-zero", Severity::kWarning},
    {"item-count-mismatch", Severity::kWarning},
    {"total-size-mismatch", Severity::kWarning},
    {"empty-name", Severity::kWarning},
    {"empty-format", Severity::kWarning},
    {"white-space-in-name", Severity::kWarning},
    {"blank-in-name", Severity::kNote},
    {"mixed-normalization", Severity::kWarning},
    {"path-separator-in-name", Severity::kWarning},
    {"dot-in-format", Severity::kWarning},
    {"extension-twice", Severity::kWarning},
    {"duplicate-id", Severity::kWarning},
    {"duplicate-order", Severity::kWarning},
    {"duplicate-file", Severity::kWarning},
    {"not-an-address", Severity::kWarning},
    {"empty-address", Severity::kNote},
    {"not-a-subnet-mask", Severity::kWarning},
    {"gateway-outside-subnet", Severity::kWarning},
    {"master-not-own-address", Severity::kWarning},
    {"is-master-value", Severity::kWarning},
};

constexpr int kRuleCount = static_cast<int>(Rule::kCount);
static_assert(sizeof kRules / sizeof kRules[0] == kRuleCount);

} // namespace

const char* NameOf(Rule rule)
{
    return kRules[static_cast<int>(rule)].name;
}

Severity SeverityOf(Rule rule)
{
    return kRules[static_cast<int>(rule)].severity;
}

std::optional<Rule> FindRule(std::string_view name)
{
    for (int index = 0; index < kRuleCount; ++index) {
        if (name == kRules[index].name) {
            return static_cast<Rule>(index);
        }
    }
    return std::nullopt;
}

std::vector<std::string> RuleNames()
{
    std::vector<std::string> names;
    for (const Entry& rule : kRules) {
        names.emplace_back(rule.name);
    }
    return names;
}

} // namespace lint
