#include "Diagnostics/Lint/ProjectChecker.h"

#include <algorithm>
#include <iterator>

#include "Diagnostics/Lint/TvConversions.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

constexpr char kEffect[] = "the TV keeps the announced number and goes by the items";

} // namespace

void ProjectChecker::Begin(const StartTag& project, const std::vector<Judgement>& values)
{
    const auto announced = [&](const char* name) -> std::optional<Announced> {
        const std::optional<std::size_t> index = project.Find(name);
        if (!index || !values[*index].isFlawless) {
            return std::nullopt;
        }
        return Announced{tv::Unsigned(project.AttributeValue(*index)), reporter_.Kept(project.ValuePlace(*index))};
    };
    count_ = announced("item_count");
    size_ = announced("total_size");
}

void ProjectChecker::AddItem(uVQMINT64 size, bool sizeIsSure)
{
    ++items_;
    overflow_ = __builtin_add_overflow(total_, size, &total_) || overflow_;
    sizesAreSure_ = sizesAreSure_ && sizeIsSure;
}

/// Whether the items that the TV has are those that the author wrote.
bool ProjectChecker::ItemsAreSure() const
{
    static constexpr Rule kRules[] = {Rule::kMisspeltElement,     Rule::kRepeatedElement, Rule::kScheduleInSchedule,
                                      Rule::kItemOutsideSchedule, Rule::kItemInItem,      Rule::kChildOutsideItem,
                                      Rule::kElementInText};
    return std::none_of(std::begin(kRules), std::end(kRules),
                        [this](Rule rule) { return reporter_.HasReported(rule); });
}

void ProjectChecker::Finish(bool isWhole)
{
    const bool isSure = isWhole && ItemsAreSure();
    if (count_ && count_->value != items_) {
        const std::string items = std::to_string(items_);
        reporter_.Report(count_->place, {Rule::kItemCountMismatch,
                                         "item_count is " + std::to_string(count_->value) + ", but there " +
                                             (items_ == 1 ? "is " : "are ") + Counted(items_, "item"),
                                         items, kEffect, isSure ? items : ""});
    }
    if (size_ && (overflow_ || size_->value != total_)) {
        const std::string total = overflow_ ? "more than 18446744073709551615" : std::to_string(total_);
        reporter_.Report(size_->place,
                         {Rule::kTotalSizeMismatch,
                          "total_size is " + std::to_string(size_->value) + ", but the items' sizes add up to " + total,
                          total, kEffect, isSure && sizesAreSure_ && !overflow_ ? total : ""});
    }
}

} // namespace lint
