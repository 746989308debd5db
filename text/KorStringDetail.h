#pragma once

// Byte strings with a length, so that a NUL byte is a byte like any other. Not installed.

#include <initializer_list>
#include <string>
#include <string_view>

/// What `isspace` reports in the "C" locale.
constexpr std::string_view KOR_WHITE_SPACE = " \t\n\v\f\r";

/// The text, empty for a null pointer.
inline std::string_view KorText(const char* pszText)
{
    return pszText != nullptr ? std::string_view(pszText) : std::string_view();
}

/// The parts one behind the other. A chain of "+" would take three times the code.
std::string KorConcat(std::initializer_list<std::string_view> lstParts);

/// As KOR_WHITE_SPACE.
constexpr bool KorIsWhiteSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The text without trailing white space.
inline std::string_view KorRTrim(std::string_view strText)
{
    while (!strText.empty() && KorIsWhiteSpace(strText.back()))
        strText.remove_suffix(1);
    return strText;
}

/// The text without leading white space.
inline std::string_view KorLTrim(std::string_view strText)
{
    while (!strText.empty() && KorIsWhiteSpace(strText.front()))
        strText.remove_prefix(1);
    return strText;
}
