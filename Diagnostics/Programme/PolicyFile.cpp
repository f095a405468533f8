#include "Diagnostics/Programme/PolicyFile.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Lint/ParseErrorText.h"
#include "Diagnostics/Text/InputFile.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace schedule {

namespace {

constexpr std::size_t kReadUnit = 1048576;

struct Document {
    std::string text; ///< up to the first zero byte
    bool textAfterNul = false;
    std::string head; ///< the first bytes, whatever they are
};

/// Passes a file on, as far as it is looked at.
class BoundedSource {
public:
    explicit BoundedSource(const InputFile& file) : file_(file) {}

    std::size_t operator()(char* buffer, std::size_t size)
    {
        const std::size_t count = file_.Read(buffer, std::min(size, left_));
        left_ -= count;
        return count;
    }

private:
    const InputFile& file_;
    std::size_t left_ = kMaxDocument + 1; ///< one more than is allowed, which shows that there is more
};

Document ReadDocument(const std::string& path)
{
    const InputFile file(path);
    lint::DocumentReader reader{BoundedSource(file)};
    Document document;
    while (!reader.AtEnd()) {
        reader.ReadUpTo(document.text, document.text.size() + kReadUnit);
    }
    document.textAfterNul = reader.HasTextAfterNul();
    document.head = reader.Head();
    return document;
}

[[noreturn]] void Refuse(const std::string& what, const std::string& name, const std::string& why)
{
    throw std::runtime_error("cannot " + what + " '" + name + "': " + why);
}

/// Why the document is rejected. A text in UTF-16 ends at its first zero byte, so only the head shows its
/// encoding.
std::string Cause(const Document& document)
{
    const bool endsEarly = document.text.size() < document.head.size();
    return lint::ParseErrorText(endsEarly ? document.head : document.text);
}

} // namespace

PolicyFile ReadPolicyFile(const std::string& path, std::string* text)
{
    PolicyFile file;
    file.name = ShownName(path);
    Document document;
    try {
        document = ReadDocument(path);
    } catch (const std::system_error& error) {
        Refuse("read", file.name, error.code().message());
    }
    if (document.text.size() > kMaxDocument) {
        Refuse("read", file.name, "more than " + std::to_string(kMaxDocument) + " bytes; expected a schedule document");
    }
    file.textAfterNul = document.textAfterNul;

    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    if (!serializer.Create() || !serializer.Deserialize(document.text.c_str(), &container)) {
        Refuse("parse", file.name, Cause(document));
    }
    container.GetSturcture(&file.policy);
    if (text != nullptr) {
        *text = std::move(document.text);
    }
    return file;
}

std::string UnreadTextNote(const PolicyFile& file)
{
    return file.textAfterNul ? "note: '" + file.name + "' has a zero byte and text after it, which the TV never reads"
                             : "";
}

} // namespace schedule
