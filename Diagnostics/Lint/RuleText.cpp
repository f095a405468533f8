#include "Diagnostics/Lint/RuleText.h"

#include <algorithm>
#include <sstream>

namespace lint {

namespace {

constexpr std::string_view kFence = "```";

std::string WithoutMarks(std::string_view text)
{
    std::string plain(text);
    plain.erase(std::remove(plain.begin(), plain.end(), '`'), plain.end());
    return plain;
}

/// Breaks a paragraph into lines.
class Paragraph {
public:
    explicit Paragraph(std::size_t columns) : columns_(columns) {}

    void Add(const std::string& line)
    {
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            if (!line_.empty() && line_.size() + 1 + word.size() > columns_) {
                text_ += line_ + "\n";
                line_.clear();
            }
            line_ += (line_.empty() ? "" : " ") + word;
        }
    }

    std::string Take()
    {
        std::string text = text_ + (line_.empty() ? "" : line_ + "\n");
        text_.clear();
        line_.clear();
        return text;
    }

private:
    std::size_t columns_;
    std::string text_;
    std::string line_;
};

} // namespace

std::string PlainText(const RuleText& rule, std::size_t columns)
{
    std::string text;
    Paragraph paragraph(columns);
    std::istringstream lines{std::string(rule.markdown)};
    bool inExample = false;
    for (std::string line; std::getline(lines, line);) {
        const bool isFence = line.compare(0, kFence.size(), kFence) == 0;
        if (isFence) {
            inExample = !inExample;
        } else if (inExample) {
            text += "    " + line + "\n";
        } else if (!line.empty()) {
            paragraph.Add(WithoutMarks(line));
            continue;
        }
        text += paragraph.Take();
        if (!inExample && !isFence && !text.empty()) {
            text += "\n";
        }
    }
    text += paragraph.Take();
    return text.substr(0, text.find_last_not_of('\n') + 1) + "\n";
}

std::string FirstSentence(const RuleText& rule)
{
    std::string text =
        WithoutMarks(rule.markdown.substr(std::min(rule.markdown.find_first_not_of('\n'), rule.markdown.size())));
    std::replace(text.begin(), text.end(), '\n', ' ');
    // A blank follows the period, unlike that of a number.
    const std::size_t end = text.find(". ");
    return text.substr(0, end == std::string::npos ? end : end + 1);
}

} // namespace lint
