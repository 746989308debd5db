#pragma once

// Byte strings with a length, so that a NUL byte is a byte like any other. Not installed.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// The text, empty for a null pointer.
inline std::string_view KorText(const char* pszText)
{
    return pszText != nullptr ? std::string_view(pszText) : std::string_view();
}

/// The parts one behind the other. A chain of "+" would take three times the code.
std::string KorConcat(std::initializer_list<std::string_view> lstParts);

/// Adds a text behind the others: one copy of what the template makes at each place.
void KorAdd(std::vector<std::string>& rvecTexts, std::string_view strText);
void KorAdd(std::vector<std::string_view>& rvecTexts, std::string_view strText);

/// Writes the digits of a number in front of @p pLast; of 0, none.
/// @return the first of them
char* KorPutDecimal(char* pLast, std::uint64_t nNumber);

/// A number in decimal digits.
std::string KorDecimal(std::uint64_t nNumber);

/// Whether `isspace` reports the character in the "C" locale.
constexpr bool KorIsWhiteSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool KorHasWhiteSpace(std::string_view strText);

/// The text without trailing white space.
inline std::string_view KorRTrim(std::string_view strText)
{
    while (!strText.empty() && KorIsWhiteSpace(strText.back()))
        strText.remove_suffix(1);
    return strText;
}

/// The text without white space at its ends.
std::string_view KorTrim(std::string_view strText);

/// The text without leading white space.
inline std::string_view KorLTrim(std::string_view strText)
{
    while (!strText.empty() && KorIsWhiteSpace(strText.front()))
        strText.remove_prefix(1);
    return strText;
}
