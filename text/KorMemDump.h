#pragma once

/// @file
/// Hexadecimal dumps of memory for log output.
///
/// The text is the same in every locale and, but for the length of the address, on every host.
/// The functions keep no state and may run on any number of threads.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#texts-and-dumps

#include "KorExport.h"

#include <string>

/// @addtogroup texts
/// @{

/// One line of a dump: offset, sixteen bytes in two halves, and the bytes as characters. It has
/// no line end.
///
///     0x0010 41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 0a ABCDEFGHIJKLMNO.
///
/// Bytes other than 0x20 to 0x7e show as "." in the last column. A line of fewer than 16 bytes is
/// filled up with blanks, so that every line is as wide.
///
/// @param data   start of the whole block, not of the line; null shows no bytes
/// @param length length of the whole block in bytes
/// @param offset index in the block of the line's first byte. It is not checked: beyond
///               @p length the line shows the 16 bytes at @p data + @p offset.
TARVO_EXT_API std::string KorMemDumpLine(const char* data, unsigned int length,
                                         unsigned int offset);

/// A dump of a block of memory: a header line and a line for each 16 bytes, each with a line end.
/// Of a long block only the first and the last lines may be shown, with a line "..." between.
///
///     Address: 0x0xbe8c1a20  Length : 0x00000020
///
/// The header shows the address with its prefix doubled, and an address of fewer than 8
/// characters, prefix included, with zeros in front of that prefix ("0x00x1f000").
///
/// @param data      the block
/// @param length    its length in bytes; 0 gives the header alone
/// @param headLines lines to show from the start of the block
/// @param tailLines lines to show from its end. A block that has no more than
///                  @p headLines + @p tailLines lines is shown whole; 0xFFFFFFFF for both shows
///                  every block whole.
/// @return the text; empty for a null @p data
TARVO_EXT_API std::string KorMemDump(const char* data, unsigned int length, unsigned int headLines,
                                     unsigned int tailLines);

/// @}
