#include "Diagnostics/Text/Suggestions.h"

#include <algorithm>
#include <cctype>

namespace {

/// A longer word is not a typing error, and comparing two words costs the product of their lengths.
constexpr std::size_t kLongestWord = 64;

bool SameLetter(char left, char right)
{
    return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
}

} // namespace

std::size_t EditDistance(std::string_view left, std::string_view right)
{
    // Row i, column j of the table: the distance between the first i letters of `left` and the first j of
    // `right`. Swapped neighbours look two rows back, so three rows are kept.
    const std::size_t width = right.size() + 1;
    std::vector<std::size_t> beforeLast(width);
    std::vector<std::size_t> last(width);
    std::vector<std::size_t> row(width);
    for (std::size_t column = 0; column < width; ++column) {
        last[column] = column;
    }
    for (std::size_t i = 1; i <= left.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j < width; ++j) {
            const std::size_t replaced = last[j - 1] + (SameLetter(left[i - 1], right[j - 1]) ? 0U : 1U);
            row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && SameLetter(left[i - 1], right[j - 2]) && SameLetter(left[i - 2], right[j - 1])) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last[right.size()];
}

std::vector<std::string> Suggest(std::string_view word, const std::vector<std::string>& candidates, std::size_t limit)
{
    struct Scored {
        std::size_t distance;
        const std::string* candidate;
    };
    if (word.size() > kLongestWord) {
        return {};
    }
    // One wrong letter in three, and at least one.
    const std::size_t tolerance = std::max<std::size_t>(1, word.size() / 3);
    std::vector<Scored> scored;
    for (const std::string& candidate : candidates) {
        // The distance is at least the difference in length.
        const std::size_t longer = std::max(word.size(), candidate.size());
        if (longer - std::min(word.size(), candidate.size()) > tolerance) {
            continue;
        }
        const std::size_t distance = EditDistance(word, candidate);
        if (distance <= tolerance) {
            scored.push_back({distance, &candidate});
        }
    }
    std::stable_sort(scored.begin(), scored.end(),
                     [](const Scored& left, const Scored& right) { return left.distance < right.distance; });
    std::vector<std::string> names;
    for (const Scored& entry : scored) {
        if (names.size() == limit) {
            break;
        }
        if (std::find(names.begin(), names.end(), *entry.candidate) == names.end()) {
            names.push_back(*entry.candidate);
        }
    }
    return names;
}

std::string JoinWithOr(const std::vector<std::string>& words)
{
    std::string joined;
    for (std::size_t index = 0; index < words.size(); ++index) {
        if (index > 0) {
            joined += index + 1 == words.size() ? " or " : ", ";
        }
        joined += words[index];
    }
    return joined;
}
