#include "Tests/Fuzz/ParserEvents.h"

#include <functional>
#include <memory>
#include <type_traits>

#include <expat.h>

#include "Tests/Fuzz/Check.h"

namespace {

/// From here on what a document unfolds to is held against its own size.
constexpr unsigned long long kBombThreshold = 16384;
constexpr std::size_t kBombFactor = 100; // the parser's default

using Listeners = std::vector<EventListener*>;

void OnStart(void* data, const char* name, const char** attributes)
{
    for (EventListener* listener : *static_cast<const Listeners*>(data)) {
        listener->Start(name, attributes);
    }
}

void OnEnd(void* data, const char* name)
{
    for (EventListener* listener : *static_cast<const Listeners*>(data)) {
        listener->End(name);
    }
}

void OnText(void* data, const char* text, int size)
{
    for (EventListener* listener : *static_cast<const Listeners*>(data)) {
        listener->Text({text, static_cast<std::size_t>(size)});
    }
}

} // namespace

Verdict ParseWithExpat(std::string_view document, const Listeners& listeners)
{
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    XML_SetBillionLaughsAttackProtectionActivationThreshold(parser.get(), kBombThreshold);
    Listeners called = listeners;
    XML_SetUserData(parser.get(), &called);
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser.get(), OnText);
    if (XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE) == XML_STATUS_OK) {
        return Verdict::WellFormed;
    }
    return XML_GetErrorCode(parser.get()) == XML_ERROR_AMPLIFICATION_LIMIT_BREACH ? Verdict::Bomb : Verdict::Refused;
}

std::size_t LargestText(std::size_t length)
{
    return kBombThreshold + kBombFactor * length;
}

bool EarlyBombSerializer::Create()
{
    return CVQMXMLSerialize::Create() &&
           XML_SetBillionLaughsAttackProtectionActivationThreshold(m_pParser, kBombThreshold) == XML_TRUE;
}

bool EarlyBombSerializer::Read(std::string_view document, CVQMDataSerializableObject& target)
{
    Check(Create(), "no parser");
    const bool parsed = Deserialize(std::string(document).c_str(), &target);
    Check(m_pParser == nullptr, "the parser outlives its document");
    return parsed;
}

bool ListeningTarget::ReadFrom(IVQMSerialize* pSerialize)
{
    auto& serializer = *dynamic_cast<CVQMXMLSerialize*>(pSerialize);
    const char* const name = serializer.GetParsingElementName();
    const char** const attributes = serializer.GetParsingAttributes();
    const char* const text = serializer.GetParsingText();
    switch (serializer.GetParsingStep()) {
    case PARSING_START_ELEMENT:
        Check(name != nullptr && attributes != nullptr && text == nullptr, "a start tag with other parts");
        listener_.Start(name, attributes);
        break;
    case PARSING_END_ELEMENT:
        Check(name != nullptr && attributes == nullptr && text == nullptr, "an end tag with other parts");
        listener_.End(name);
        break;
    case PARSING_ELEMENT_DATA:
        Check(name == nullptr && attributes == nullptr && text != nullptr, "a text with other parts");
        listener_.Text(text);
        break;
    default:
        Fail("an unknown step");
    }
    return false; // of no consequence
}

void EventDigest::Start(const char* name, const char** attributes)
{
    Add('<', name);
    for (; *attributes != nullptr; ++attributes) {
        Add('=', *attributes);
    }
}

void EventDigest::End(const char* name)
{
    Add('>', name);
}

void EventDigest::Text(std::string_view piece)
{
    Add('t', piece);
    textSize_ += piece.size();
}

void EventDigest::Add(char kind, std::string_view text)
{
    value_ = (value_ * 31 + static_cast<std::size_t>(kind)) * 31 + std::hash<std::string_view>()(text);
}
