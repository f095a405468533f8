#pragma once

#include <string>
#include <vector>

/// Lines of cells in columns as wide as their widest cell, up to 80 characters, two blanks between them.
///
/// What is added is escaped for a terminal. No line ends in blanks.
class Table {
public:
    enum class Align { kLeft, kRight };

    /// One alignment for each column. Further cells of a line go to the left.
    explicit Table(std::vector<Align> columns);

    void Add(const std::vector<std::string>& cells);

    /// All lines, each with `indent` blanks before it.
    std::string Text(std::size_t indent = 0) const;

private:
    std::vector<Align> columns_;
    std::vector<std::vector<std::string>> lines_;
};
