#include "Diagnostics/Group/Periods.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Text/Words.h"

namespace group {

namespace {

struct Item {
    const _VQMContentInfo* content;
    const Place* place;
};

struct Period {
    std::size_t number; ///< from 1
    const _VQMSchdule* period;
    const PeriodPlaces* places;
    std::pair<long long, long long> times; ///< start and end
};

std::string Text(const Period& period)
{
    return "period " + std::to_string(period.number) + " from " + schedule::TimeText(period.times.first) + " to " +
           schedule::TimeText(period.times.second);
}

std::string Text(const Item& item)
{
    return "item " + QuotedShort(item.content->strName);
}

std::vector<Period> PeriodsOf(const Document& document)
{
    std::vector<Period> periods;
    for (const _VQMSchdule& period : document.Policy().listSchedule) {
        const std::size_t index = periods.size();
        periods.push_back({index + 1,
                           &period,
                           &document.AllPlaces().periods[index],
                           {schedule::SecondsOf(period.stStartTime), schedule::SecondsOf(period.stEndTime)}});
    }
    std::stable_sort(periods.begin(), periods.end(),
                     [](const Period& left, const Period& right) { return left.times < right.times; });
    return periods;
}

/// Sorted by name, and items of one name by their order.
std::vector<Item> ItemsOf(const Period& period)
{
    std::vector<Item> items;
    items.reserve(period.places->items.size());
    for (const _VQMContentInfo& content : period.period->listContents) {
        items.push_back({&content, &period.places->items[items.size()]});
    }
    std::stable_sort(items.begin(), items.end(), [](const Item& left, const Item& right) {
        return std::tie(left.content->strName, left.content->nOrder) <
               std::tie(right.content->strName, right.content->nOrder);
    });
    return items;
}

/// Goes through two sorted lists: `both` for what both have, `left` and `right` for what one has alone.
template <typename Element, typename Key, typename Both, typename Left, typename Right>
void Merge(const std::vector<Element>& lefts, const std::vector<Element>& rights, Key key, Both both, Left left,
           Right right)
{
    auto first = lefts.begin();
    auto second = rights.begin();
    while (first != lefts.end() || second != rights.end()) {
        if (second == rights.end() || (first != lefts.end() && key(*first) < key(*second))) {
            left(*first++);
        } else if (first == lefts.end() || key(*second) < key(*first)) {
            right(*second++);
        } else {
            both(*first++, *second++);
        }
    }
}

class Comparison {
public:
    Comparison(const Document& first, const Document& other, std::size_t number, DifferenceList& differences)
        : first_(first), other_(other), number_(number), differences_(differences)
    {
    }

    void Run()
    {
        std::vector<Period> missing;
        std::vector<Period> extra;
        Merge(
            PeriodsOf(first_), PeriodsOf(other_), [](const Period& period) { return period.times; },
            [this](const Period& left, const Period& right) { CompareItems(left, right); },
            [&missing](const Period& period) { missing.push_back(period); },
            [&extra](const Period& period) { extra.push_back(period); });
        // Periods left over on both sides are paired in the order of their times.
        const std::size_t moved = std::min(missing.size(), extra.size());
        for (std::size_t index = 0; index < moved; ++index) {
            const Period& left = missing[index];
            const Period& right = extra[index];
            Add(right.places->period, left.places->period,
                {"period-differs", Text(right) + " has other times", Text(left), "the same periods in all documents"});
            CompareItems(left, right);
        }
        for (std::size_t index = moved; index < missing.size(); ++index) {
            AddMissing(missing[index]);
        }
        for (std::size_t index = moved; index < extra.size(); ++index) {
            Add(extra[index].places->period, Whole(first_),
                {"period-extra", Text(extra[index]) + " is in this document alone", "there is no such period here",
                 "the same periods in all documents"});
        }
    }

private:
    /// Stands for what a document does not have.
    static const Place& Whole(const Document& document)
    {
        const Places& places = document.AllPlaces();
        return places.periods.empty() ? places.root : places.periods.back().period;
    }

    void Add(const Place& here, const Place& there, Finding finding)
    {
        if (differences_.IsFull()) {
            differences_.Count();
            return;
        }
        differences_.Add(number_, other_.At(here), first_.At(there), std::move(finding));
    }

    void AddMissing(const Period& period)
    {
        Add(Whole(other_), period.places->period,
            {"period-missing", "there is no " + Text(period), Text(period), "the same periods in all documents"});
    }

    void CompareItems(const Period& left, const Period& right)
    {
        constexpr char kExpected[] = "the same items in all documents";
        Merge(
            ItemsOf(left), ItemsOf(right), [](const Item& item) -> const std::string& { return item.content->strName; },
            [this](const Item& first, const Item& second) { CompareItem(first, second); },
            [&](const Item& item) {
                Add(right.places->period, *item.place,
                    {"item-missing", Text(right) + " has no " + Text(item), Text(item), kExpected});
            },
            [&](const Item& item) {
                Add(*item.place, left.places->period,
                    {"item-extra", Text(item) + " is in this document alone", Text(left) + " does not have it",
                     kExpected});
            });
    }

    void CompareItem(const Item& left, const Item& right)
    {
        const auto compare = [&](const char* id, const char* what, const auto& before, const auto& now,
                                 Severity severity) {
            if (before != now) {
                Add(*right.place, *left.place,
                    {id, Text(right) + " has the " + what + " " + Shown(now) + ", not " + Shown(before),
                     Text(left) + " has the " + what + " " + Shown(before),
                     std::string("the same ") + what + " in all documents", severity});
            }
        };
        compare("item-order-differs", "order", left.content->nOrder, right.content->nOrder, Severity::kError);
        compare("item-size-differs", "size", left.content->nSize, right.content->nSize, Severity::kError);
        compare("item-id-differs", "id", left.content->strID, right.content->strID, Severity::kWarning);
    }

    static std::string Shown(const std::string& text) { return QuotedShort(text); }

    template <typename Number>
    static std::string Shown(Number number)
    {
        return std::to_string(number);
    }

    const Document& first_;
    const Document& other_;
    std::size_t number_;
    DifferenceList& differences_;
};

} // namespace

void ComparePeriods(const Document& first, const Document& other, std::size_t number, DifferenceList& differences)
{
    Comparison(first, other, number, differences).Run();
}

} // namespace group
