#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lint {

/// A rule's section of the documentation.
struct RuleText {
    std::string_view name;
    std::string_view markdown; ///< paragraphs and examples, without the heading
};

/// In the order of the documentation.
const std::vector<RuleText>& RuleTexts();

/// The section for a terminal: paragraphs in lines of at most `columns` characters, examples indented as they
/// are.
std::string PlainText(const RuleText& rule, std::size_t columns);

/// The first sentence of the section, on one line.
std::string FirstSentence(const RuleText& rule);

} // namespace lint
