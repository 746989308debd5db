#pragma once

/// @file
/// Bytes as hexadecimal text, and back.
///
/// New programs take these functions; KorMemDump() stays for those that know its text, which
/// shows the block's address and so differs from run to run.
///
///     std::string strTelegram;
///     if (!KorFromHexText("01 03 00:6b", strTelegram)) // "\x01\x03\0\x6b"
///         return false;
///     log(KorToHexText(strTelegram.data(), strTelegram.size())); // "01 03 00 6B"
///     log(KorToHexDump(strTelegram.data(), strTelegram.size()));
///
/// The functions keep no state, are the same in every locale and may run on any number of threads.

#include "KorExport.h"

#include <string>

/// @addtogroup texts
/// @{

/// The bytes as pairs of upper-case digits: "01 03 6B".
/// @param pData       the bytes; null counts as none
/// @param nLength     how many
/// @param cSeparator  stands between two pairs; 0 for nothing between them
/// @return the text, without a separator at its ends; empty for no bytes
TARVO_EXT_API std::string KorToHexText(const char* pData, unsigned int nLength,
                                       char cSeparator = ' ');

/// Reads bytes from pairs of digits of either case. Between two pairs stands nothing, white space
/// (blank, tab, line feed, vertical tab, form feed, carriage return; any number of them), or one
/// ":", "-" or ",", around which white space may stand.
/// @param strHex         the text; an empty one is no bytes
/// @param[out] rstrData  the bytes; may be the same string as @p strHex
/// @return whether the whole text was read; if not, @p rstrData is unchanged. Half a pair, a
///         separator before the first or behind the last pair, two marks in a row and any other
///         character make it false.
TARVO_EXT_API bool KorFromHexText(const std::string& strHex, std::string& rstrData);

/// The bytes in lines: the offset of the line's first byte, the bytes, the bytes as characters.
/// Equal bytes give equal dumps, wherever they are in memory.
///
///     0000  41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 0A  ABCDEFGHIJKLMNO.
///     0010  61 62 63                                         abc
///
/// The offset is hexadecimal with at least four digits. Bytes other than 0x20 to 0x7e show as "."
/// among the characters. Each line ends with a line feed, without blanks in front of it but those
/// that are characters of the data.
/// @param pData     the bytes; null counts as none
/// @param nLength   how many
/// @param nPerLine  bytes in a line; 0 counts as 16
/// @return the text; empty for no bytes
TARVO_EXT_API std::string KorToHexDump(const char* pData, unsigned int nLength,
                                       unsigned int nPerLine = 16);

/// @}
