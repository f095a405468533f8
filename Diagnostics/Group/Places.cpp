#include "Diagnostics/Group/Places.h"

#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <strings.h>
#include <type_traits>
#include <utility>

#include <expat.h>

#include "Diagnostics/Lint/ParserPlace.h"
#include "Diagnostics/Lint/StartTag.h"

namespace group {

namespace {

using lint::Element;

struct FieldInfo {
    const char* attribute;
    Element element;
};

constexpr std::array<FieldInfo, kFields> kFieldInfos = {{
    {"id", Element::kProject},
    {"version", Element::kProject},
    {"IsMaster", Element::kRechInfo},
    {"NumOfPlayer", Element::kRechInfo},
    {"IPAddrOfMaster", Element::kRechInfo},
    {"IPAddr", Element::kRechInfo},
    {"SubnetMask", Element::kRechInfo},
}};

/// The most bytes that the parser is given at once; it counts in int.
constexpr std::size_t kPiece = 16777216;

/// Follows the parser as the library's own reader of documents does: by names, whatever contains what.
class Finder {
public:
    explicit Finder(lint::DocumentWindow& window) : window_(window), parser_(XML_ParserCreate(nullptr))
    {
        if (parser_ == nullptr) {
            throw std::bad_alloc();
        }
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), OnStart, OnEnd);
        XML_SetXmlDeclHandler(parser_.get(), OnDeclaration);
    }

    Places Find()
    {
        for (std::uint64_t offset = 0; offset < window_.End() && !thrown_; offset += kPiece) {
            const std::string_view piece = window_.View(offset, kPiece);
            // No call is the final one, which would only report errors: the library has accepted the document.
            XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), XML_FALSE);
        }
        if (thrown_) {
            std::rethrow_exception(thrown_);
        }
        places_.root = root_.value_or(Place());
        for (std::size_t index = 0; index < kFields; ++index) {
            const auto& tag = tags_[static_cast<std::size_t>(kFieldInfos[index].element)];
            places_.fields[index] = values_[index].value_or(tag.value_or(places_.root));
        }
        return std::move(places_);
    }

private:
    struct Free {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    static void OnStart(void* self, const char* name, const char** attributes)
    {
        auto& finder = *static_cast<Finder*>(self);
        finder.Guarded([&] {
            const auto offset = static_cast<std::uint64_t>(ByteIndex(finder.parser_.get()));
            const auto size = static_cast<std::uint64_t>(ByteCount(finder.parser_.get()));
            const lint::Position position = finder.window_.Advance(offset);
            finder.Start(lint::StartTag(finder.window_, name, attributes, position, size));
        });
    }

    static void OnEnd(void* self, const char* name)
    {
        auto& finder = *static_cast<Finder*>(self);
        finder.Guarded([&] { finder.End(lint::ElementNamed(name)); });
    }

    static void OnDeclaration(void* self, const char* /*version*/, const char* encoding, int /*standalone*/)
    {
        if (encoding != nullptr && strcasecmp(encoding, "UTF-8") != 0) {
            static_cast<Finder*>(self)->window_.SetSingleByteCharacters();
        }
    }

    /// No exception crosses the parser's C code.
    template <typename Action>
    void Guarded(Action action)
    {
        try {
            action();
        } catch (...) {
            thrown_ = std::current_exception();
            XML_StopParser(parser_.get(), XML_FALSE);
        }
    }

    static Place PlaceOf(const lint::Range& range) { return {range.position, range.size}; }

    void Start(const lint::StartTag& tag)
    {
        const Place whole = PlaceOf(tag.Whole());
        root_ = root_.value_or(whole);
        tags_[static_cast<std::size_t>(tag.Kind())] = whole;
        for (std::size_t index = 0; index < kFields; ++index) {
            if (kFieldInfos[index].element != tag.Kind()) {
                continue;
            }
            if (const std::optional<std::size_t> attribute = tag.Find(kFieldInfos[index].attribute)) {
                values_[index] = PlaceOf(tag.ValuePlace(*attribute));
            }
        }
    }

    void End(Element element)
    {
        if (element == Element::kItem) {
            items_.push_back(*tags_[static_cast<std::size_t>(element)]);
        } else if (element == Element::kSchedule) {
            places_.periods.push_back({*tags_[static_cast<std::size_t>(element)], std::exchange(items_, {})});
        }
    }

    lint::DocumentWindow& window_;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser_;
    std::exception_ptr thrown_;
    Places places_;
    std::vector<Place> items_; ///< that wait for their period to end
    std::optional<Place> root_;
    std::array<std::optional<Place>, VQMScheduleFormat::kElementCount> tags_; ///< the last of each element
    std::array<std::optional<Place>, kFields> values_;
};

} // namespace

const char* NameOf(Field field)
{
    return kFieldInfos[static_cast<std::size_t>(field)].attribute;
}

Places FindPlaces(lint::DocumentWindow& window)
{
    return Finder(window).Find();
}

} // namespace group
