#include "Diagnostics/Text/Table.h"

#include <algorithm>
#include <utility>

#include "Diagnostics/Text/TerminalText.h"

namespace {

constexpr std::size_t kGap = 2;

/// A wider cell sticks out of its column; otherwise one long text would widen every line.
constexpr std::size_t kWidestColumn = 80;

std::size_t WidthInColumn(const std::string& cell)
{
    return std::min(WidthOnTerminal(cell), kWidestColumn);
}

} // namespace

Table::Table(std::vector<Align> columns) : columns_(std::move(columns)) {}

void Table::Add(const std::vector<std::string>& cells)
{
    std::vector<std::string> line;
    line.reserve(cells.size());
    for (const std::string& cell : cells) {
        line.push_back(EscapedForTerminal(cell));
    }
    columns_.resize(std::max(columns_.size(), line.size()), Align::kLeft);
    lines_.push_back(std::move(line));
}

std::string Table::Text(std::size_t indent) const
{
    std::vector<std::size_t> widths(columns_.size());
    for (const std::vector<std::string>& line : lines_) {
        for (std::size_t column = 0; column < line.size(); ++column) {
            widths[column] = std::max(widths[column], WidthInColumn(line[column]));
        }
    }
    std::string text;
    for (const std::vector<std::string>& line : lines_) {
        std::string blanks(indent, ' '); // written only before a further cell: no line ends in blanks
        for (std::size_t column = 0; column < line.size(); ++column) {
            const std::string padding(widths[column] - WidthInColumn(line[column]), ' ');
            const bool right = columns_[column] == Align::kRight;
            blanks += right ? padding : "";
            if (!line[column].empty()) {
                text += blanks + line[column];
                blanks.clear();
            }
            blanks += (right ? "" : padding) + std::string(kGap, ' ');
        }
        text += '\n';
    }
    return text;
}
