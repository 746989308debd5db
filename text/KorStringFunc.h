#pragma once

/// @file
/// Trimming, quoting and splitting of byte strings.
///
/// White space is what `isspace` reports in the "C" locale: blank, tab, line feed, vertical tab,
/// form feed and carriage return. All functions keep no state and may run on any number of
/// threads; a null text reads as documented, never as an error.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#splitting-knows-no-quotes

#include "KorExport.h"

#include <string>
#include <vector>

/// @addtogroup texts
/// @{

/// The text without trailing white space; a null @p pszText gives the empty string.
TARVO_EXT_API std::string KorStrRTrim(const char* pszText);

/// The text without leading white space; a null @p pszText gives the empty string.
TARVO_EXT_API std::string KorStrLTrim(const char* pszText);

/// The text without leading and trailing white space; a null @p pszText gives the empty string.
TARVO_EXT_API std::string KorStrTrim(const char* pszText);

/// Removes one pair of enclosing double quotes. A text of a single quote character stays; inner
/// quotes stay; there is no escape character.
/// @param[in,out] strText  the text
TARVO_EXT_API void KorDeQuoteString(std::string& strText);

/// Encloses the text in one pair of double quotes, after removing a pair that it already has.
/// @param[in,out] strText         the text; nothing inside it is escaped
/// @param bOnlyIfWhiteSpace  true: only a text with white space anywhere in it is enclosed,
///                           any other is left without quotes
TARVO_EXT_API void KorQuoteString(std::string& strText, bool bOnlyIfWhiteSpace);

/// Cuts a text at every separator. Items keep their white space, empty items are kept and quotes
/// have no meaning, so there is always one item more than there are separators.
/// @return the items; none for a null @p pszText, one empty item for an empty one
TARVO_EXT_API std::vector<std::string> KorGetParameterList(const char* pszText, char cSeparator);

/// The text with " . " behind each of its characters: "ab" gives "a . b . ".
TARVO_EXT_API std::string KorBigString(const std::string& strText);

/// Converts a text to a value. The library brings the conversions to text targets below; a
/// program may add specialisations for types of its own.
/// @return whether the text could be converted
template <typename T>
bool KorFromString(T& value, const std::string& strText);

/// Assigns the text.
/// @return always true
template <>
TARVO_EXT_API bool KorFromString<std::string>(std::string& strValue, const std::string& strText);

/// Copies the text and a terminating zero into the buffer that @p pszValue points at.
/// The caller guarantees the room; a null @p pszValue receives nothing.
/// @return always true
template <>
TARVO_EXT_API bool KorFromString<char*>(char*& pszValue, const std::string& strText);

/// @}
