#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Common/VQMDataObject.h"

/// One event of a parse.
struct DocumentEvent {
    int step = 0;
    std::string name;
    std::vector<std::string> attributes; ///< names and values in turns
    std::string text;
};

/// Delivers an event to a target without any parser.
void Deliver(const DocumentEvent& event, CVQMDataSerializableObject& target);

/// A document that is written down token by token, and so knows the events of each of its beginnings.
class TokenDocument {
public:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    TokenDocument& Start(const std::string& name, const Attributes& attributes = {});
    TokenDocument& End(const std::string& name);
    /// An empty-element tag: a start and an end.
    TokenDocument& Empty(const std::string& name, const Attributes& attributes = {});
    /// Characters that are delivered as far as they are there.
    TokenDocument& Text(const std::string& text);
    /// Text that is delivered once all of `raw` is there: a reference, a line end.
    TokenDocument& Reference(const std::string& raw, const std::string& text);
    /// What no event tells of.
    TokenDocument& Silent(const std::string& raw);

    std::string Whole() const;

    /// The events of the first `length` bytes.
    std::vector<DocumentEvent> EventsOf(std::size_t length) const;

    /// Whether the first `length` bytes are a document of their own.
    bool IsComplete(std::size_t length) const;

private:
    struct Token {
        std::string raw;
        std::vector<DocumentEvent> events;
        bool grows = false;
    };

    TokenDocument& Add(std::string raw, std::vector<DocumentEvent> events, bool grows = false);

    std::vector<Token> tokens_;
    int depth_ = 0;
    std::size_t rootEnd_ = 0;
};
