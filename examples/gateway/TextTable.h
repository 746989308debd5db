#pragma once

#include <string>
#include <vector>

/// A table of texts for people: columns as wide as they must be, two blanks between them.
class TextTable
{
public:
    /// A table with a first row of titles.
    explicit TextTable(std::vector<std::string> vecTitles) : m_vecRows{std::move(vecTitles)} {}

    /// Adds a row with as many cells as there are titles.
    void Add(std::vector<std::string> vecCells) { m_vecRows.push_back(std::move(vecCells)); }

    /// The rows, each with a line feed and without blanks at its end.
    std::string ToString() const;

private:
    std::vector<std::vector<std::string>> m_vecRows;
};
