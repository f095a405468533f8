#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/VQMDataObject.h"
#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/StartTag.h"

namespace lint {

/// What the TV makes of an item.
struct ItemFacts {
    std::string file; ///< name and extension
    uVQMINT64 size = 0;
    Range filePlace; ///< where the name stands
    bool hasName = false;
    Range sizePlace{}; ///< what stands between the tags of size; without bytes where that is not text alone
    bool hasSize = false;
    bool sizeIsSure = false; ///< one size, read as it is written, and not 0
};

/// Checks one item after the other: its name, size and format.
class ItemChecker {
public:
    /// `keepsPlaces`: the facts have the place of the size.
    ItemChecker(Reporter& reporter, bool keepsPlaces) : reporter_(reporter), keepsPlaces_(keepsPlaces) {}

    void Begin(const StartTag& item);

    /// Of a name, size or format, which the following text belongs to until its end tag.
    void BeginChild(const StartTag& child);
    void Text(std::string_view text, std::uint64_t offset);
    void EndChild(std::uint64_t endTagOffset);

    /// Reports what is wrong with the item as a whole; what the TV has is good until `Begin`.
    const ItemFacts& End();

private:
    struct Child {
        int count = 0;
        Range tag;
        bool hasText = false;
        Range textPlace;
        std::string text;

        void Clear();
        /// The text, or the tag where there is none.
        const Range& Place() const { return hasText ? textPlace : tag; }
    };

    Child& ChildOf(Element element);
    /// Which file the TV looks for.
    std::string Looks() const;
    Range TextBetweenTags(const Child& child, std::uint64_t endTagOffset) const;
    void CheckSize();
    void CheckChildren();
    void CheckFormat();
    void CheckNormalization();
    void CheckWhiteSpace(const char* what, const Child& child);

    Reporter& reporter_;
    bool keepsPlaces_;
    Range item_;
    Element open_ = Element::kUnknown;
    Child name_;
    Child size_;
    Child format_;
    bool formatFirst_ = false;
    int sizePieces_ = 0;
    std::string lastPiece_;
    ItemFacts facts_;
};

} // namespace lint
