#pragma once

// Byte strings with a length, so that a NUL byte is a byte like any other. Not installed.

#include <algorithm>
#include <string_view>

/// What `isspace` reports in the "C" locale.
constexpr std::string_view KOR_WHITE_SPACE = " \t\n\v\f\r";

/// The text, empty for a null pointer.
inline std::string_view KorText(const char* pszText)
{
    return pszText != nullptr ? std::string_view(pszText) : std::string_view();
}

/// The text without trailing white space.
inline std::string_view KorRTrim(std::string_view strText)
{
    return strText.substr(0, strText.find_last_not_of(KOR_WHITE_SPACE) + 1);
}

/// The text without leading white space.
inline std::string_view KorLTrim(std::string_view strText)
{
    return strText.substr(std::min(strText.find_first_not_of(KOR_WHITE_SPACE), strText.size()));
}
