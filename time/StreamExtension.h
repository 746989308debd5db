#pragma once

/// @file
/// Scanning of numbers of fixed width and of separators in character streams.
///
/// The functions take one character after the other, skip no white space and never read past
/// their field. A mismatch shows in the stream's fail bit, and only when the caller asks for it;
/// a stream that has failed already gives nothing more. No state, any number of threads on
/// different streams.

#include "KorExport.h"

#include <iosfwd>

/// @addtogroup timetexts
/// @{

/// Reads an unsigned decimal number of at most @p nDigits digits; it ends early at the first
/// character that is no digit. A number beyond 32 bits wraps.
/// @param oStream  the stream
/// @param nDigits  the greatest number of digits; with 0 nothing is read
/// @param pnRead   receives the number of digits read; may be null
/// @param bStrict  whether fewer digits than @p nDigits set the stream's fail bit
/// @return the value of the digits read
TARVO_EXT_API unsigned GetSizedUInt(std::istream& oStream, unsigned nDigits, unsigned* pnRead,
                                    bool bStrict);

/// Takes the next character when it is the separator, and otherwise leaves it.
/// @param oStream     the stream
/// @param cSeparator  the character to take
/// @param bStrict     whether another character sets the stream's fail bit
TARVO_EXT_API void SeparateChar(std::istream& oStream, const char& cSeparator, bool bStrict);

/// Takes the next character unless it is a digit. At the end of the input this attempt fails the
/// stream.
TARVO_EXT_API void TryRemoveNonDigit(std::istream& oStream);

/// @}
