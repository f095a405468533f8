#include "Tests/VQMSerialize/TokenDocument.h"

#include "Tests/VQMSerialize/EventSource.h"

namespace {

/// A start tag up to its '>' or '/>', the special characters of the values written as references.
std::string Tag(const std::string& name, const TokenDocument::Attributes& attributes)
{
    std::string tag = '<' + name;
    for (const auto& [attribute, value] : attributes) {
        tag += ' ' + attribute + "='";
        for (const char character : value) {
            switch (character) {
            case '&':
                tag += "&amp;";
                break;
            case '<':
                tag += "&lt;";
                break;
            case '\'':
                tag += "&#39;";
                break;
            default:
                tag += character;
            }
        }
        tag += '\'';
    }
    return tag;
}

DocumentEvent StartEvent(const std::string& name, const TokenDocument::Attributes& attributes)
{
    DocumentEvent event = {PARSING_START_ELEMENT, name, {}, ""};
    for (const auto& [attribute, value] : attributes) {
        event.attributes.push_back(attribute);
        event.attributes.push_back(value);
    }
    return event;
}

/// As much of the text as is there without a character that is cut.
std::string WholeCharacters(const std::string& text, std::size_t length)
{
    const auto continues = [&text](std::size_t at) {
        return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
    };
    while (length > 0 && continues(length)) {
        --length;
    }
    return text.substr(0, length);
}

} // namespace

void Deliver(const DocumentEvent& event, CVQMDataSerializableObject& target)
{
    std::vector<const char*> attributes;
    for (const std::string& text : event.attributes) {
        attributes.push_back(text.c_str());
    }
    attributes.push_back(nullptr);
    const bool isText = event.step == PARSING_ELEMENT_DATA;
    EventSource source(event.step, isText ? nullptr : event.name.c_str(),
                       event.step == PARSING_START_ELEMENT ? attributes.data() : nullptr,
                       isText ? event.text.c_str() : nullptr);
    target.ReadFrom(&source);
}

TokenDocument& TokenDocument::Start(const std::string& name, const Attributes& attributes)
{
    ++depth_;
    return Add(Tag(name, attributes) + '>', {StartEvent(name, attributes)});
}

TokenDocument& TokenDocument::End(const std::string& name)
{
    --depth_;
    return Add("</" + name + '>', {{PARSING_END_ELEMENT, name, {}, ""}});
}

TokenDocument& TokenDocument::Empty(const std::string& name, const Attributes& attributes)
{
    return Add(Tag(name, attributes) + "/>", {StartEvent(name, attributes), {PARSING_END_ELEMENT, name, {}, ""}});
}

TokenDocument& TokenDocument::Text(const std::string& text)
{
    return Add(text, {{PARSING_ELEMENT_DATA, "", {}, text}}, true);
}

TokenDocument& TokenDocument::Reference(const std::string& raw, const std::string& text)
{
    return Add(raw, {{PARSING_ELEMENT_DATA, "", {}, text}});
}

TokenDocument& TokenDocument::Silent(const std::string& raw)
{
    return Add(raw, {});
}

TokenDocument& TokenDocument::Add(std::string raw, std::vector<DocumentEvent> events, bool grows)
{
    tokens_.push_back({std::move(raw), std::move(events), grows});
    if (depth_ == 0 && rootEnd_ == 0 && !tokens_.back().events.empty()) {
        rootEnd_ = Whole().size();
    }
    return *this;
}

std::string TokenDocument::Whole() const
{
    std::string whole;
    for (const Token& token : tokens_) {
        whole += token.raw;
    }
    return whole;
}

std::vector<DocumentEvent> TokenDocument::EventsOf(std::size_t length) const
{
    std::vector<DocumentEvent> events;
    for (const Token& token : tokens_) {
        if (token.raw.size() > length) {
            const std::string begun = token.grows ? WholeCharacters(token.raw, length) : "";
            if (!begun.empty()) {
                events.push_back({PARSING_ELEMENT_DATA, "", {}, begun});
            }
            break;
        }
        length -= token.raw.size();
        events.insert(events.end(), token.events.begin(), token.events.end());
    }
    return events;
}

bool TokenDocument::IsComplete(std::size_t length) const
{
    return rootEnd_ != 0 && length >= rootEnd_;
}
