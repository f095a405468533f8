// Constants documents, each up to a zero byte, read one after the other into the one cache: the
// first one from a file, the others from memory.

#include <cstdint>
#include <map>

#include "Data/VQMDataConstants.h"
#include "Tests/Data/OpenConstants.h"
#include "Tests/Fuzz/Check.h"
#include "Tests/Fuzz/ParserEvents.h"
#include "Tests/Fuzz/ScratchFolder.h"
#include "Tests/Fuzz/TextOracle.h"

namespace {

using Values = std::map<std::string, std::string>;

constexpr int kMaxDocuments = 4;

/// The constants that documents define according to the format's description.
class ConstantsModel : public EventListener {
public:
    void Start(const char* name, const char** attributes) override
    {
        if (std::string_view(name) != "Data") {
            return;
        }
        std::string key;
        for (int slot = 0; slot < 2 && *attributes != nullptr; ++slot, attributes += 2) {
            const std::string_view attribute = attributes[0];
            if (attribute == "key") {
                key = attributes[1];
            } else if (attribute == "value") {
                values_[key] = attributes[1];
            }
        }
    }
    void End(const char* /*name*/) override {}
    void Text(std::string_view /*piece*/) override {}

    const Values& Get() const { return values_; }

private:
    Values values_;
};

void CheckCache(const Values& expected)
{
    Check(OpenConstants::m_DataCache == expected, "the cache does not hold what the documents define");
}

/// Looks every value up in all three ways.
void CheckLookUps(const Values& values)
{
    for (const auto& [key, expected] : values) {
        std::string text = "replaced";
        int number = 7;
        uVQMINT64 size = 7;
        CVQMDataConstants::GetValue(key, text);
        CVQMDataConstants::GetValue(key, number);
        CVQMDataConstants::GetValue(key, size);
        CheckEqual(expected, text, "the text");
        CheckEqual(IntOf(expected), number, "the int");
        CheckEqual(UnsignedOf(expected), size, "the 64-bit number");
    }
    CheckCache(values);
}

/// A key that no document defines.
void CheckUnknownKey(Values values)
{
    const std::string key = values.empty() ? "x" : values.rbegin()->first + "x";
    std::string text = "kept";
    int number = 7;
    CVQMDataConstants::GetValue(key, text);
    CVQMDataConstants::GetValue(key, number);
    CheckEqual(std::string(values.empty() ? "kept" : ""), text, "the text of an unknown key");
    CheckEqual(values.empty() ? 7 : 0, number, "the number of an unknown key");
    if (!values.empty()) {
        values[key] = "";
    }
    CheckCache(values);
}

std::string_view UpToZero(std::string_view text)
{
    return text.substr(0, text.find('\0'));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const ScratchFolder folder;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    OpenConstants::m_DataCache.clear();
    ConstantsModel model;

    for (int i = 0; i < kMaxDocuments; ++i) {
        const std::string_view document = UpToZero(rest);
        const Verdict verdict = ParseWithExpat(document, {&model});
        if (i == 0 && verdict != Verdict::Bomb) {
            // The whole input: what follows the zero byte is not read.
            const std::string path = folder.Write("constants.xml", rest);
            CheckEqual(verdict == Verdict::WellFormed, CVQMDataConstants::Initialize(path), "the verdict on the file");
        } else {
            OpenConstants target;
            CheckEqual(verdict == Verdict::WellFormed, EarlyBombSerializer().Read(document, target), "the verdict");
        }
        CheckCache(model.Get());
        if (document.size() == rest.size()) {
            break;
        }
        rest.remove_prefix(document.size() + 1);
    }

    CheckLookUps(model.Get());
    CheckUnknownKey(model.Get());
    return 0;
}
