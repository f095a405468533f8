#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics/Lint/AttributeChecker.h"
#include "Diagnostics/Lint/ItemChecker.h"
#include "Diagnostics/Lint/Observer.h"
#include "Diagnostics/Lint/PeriodChecker.h"
#include "Diagnostics/Lint/ProjectChecker.h"
#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/StartTag.h"

namespace lint {

/// Follows a document event by event and checks what stands where.
class ScheduleChecker {
public:
    /// An element that is open.
    struct Open {
        Element element = Element::kUnknown;
        std::uint64_t line = 0;
        std::string name;
        bool strayText = false; ///< reported already
    };

    /// `observer` may be null.
    ScheduleChecker(Reporter& reporter, const schedule::Day& today, Observer* observer);

    void Start(const StartTag& tag);
    void End(std::uint64_t offset);
    void Text(std::string_view text, std::uint64_t offset);

    /// At the end of a document that is well-formed. `isWhole`: nothing follows that the TV does not read.
    void Finish(bool isWhole);

    /// The innermost open element, or null.
    const Open* Innermost() const { return open_.empty() ? nullptr : &open_.back(); }

    /// From where on the document must stay at hand.
    std::uint64_t NeededFrom(std::uint64_t current) const;

private:
    void CheckPlace(const StartTag& tag);
    void CheckRepeated(const StartTag& tag);
    std::optional<Problem> JudgePlace(const StartTag& tag) const;
    std::optional<Problem> JudgeContainerPlace(const StartTag& tag) const;
    std::optional<Problem> JudgeItemPlace(const StartTag& tag) const;
    std::optional<Problem> JudgeChildPlace(const StartTag& tag) const;
    bool IsReadChild() const;
    int OpenCount(Element element) const { return openCounts_[static_cast<std::size_t>(element)]; }
    int OpenTextElements() const;

    Reporter& reporter_;
    Observer* observer_;
    AttributeChecker attributes_;
    ItemChecker item_;
    PeriodChecker period_;
    ProjectChecker project_;
    std::vector<Open> open_;
    std::vector<int> openCounts_;
    std::vector<std::uint64_t> firstLines_; ///< by element: of its first start tag; 0 for none
    Range root_;
    std::optional<std::uint64_t> itemOffset_; ///< of the item being read
};

} // namespace lint
