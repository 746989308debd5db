#pragma once

// The layout of a program's help. Not installed.

#include <cstddef>
#include <list>
#include <string>
#include <string_view>

/// A line of a list: what it is about, and what is said of it.
struct SKorHelpRow
{
    std::string strLabel;
    std::string strText;
};

/// The columns of the terminal at the standard output, at most 80; 80 where there is none.
size_t KorHelpWidth();

/// Adds a text in lines of at most @p nWidth columns.
/// @param nIndent  blanks in front of each line but the first, whose first columns are written
void KorHelpWrap(std::string& rstrHelp, std::string_view strText, size_t nColumn, size_t nIndent,
                 size_t nWidth);

/// Adds a list with its texts below one another.
void KorHelpList(std::string& rstrHelp, const std::list<SKorHelpRow>& lstRows, size_t nWidth);
