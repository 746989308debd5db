#pragma once

/// @file
/// The date of mail headers. A new program should take these: CKorUTCTime::MailFormat()
/// always claims the zone +0100.

#include "KorExport.h"
#include "time/KorUTCTime.h"

#include <string>

/// @addtogroup timetexts
/// @{

/// The time as RFC 5322 has it, such as "Tue, 05 Mar 2024 19:37:09 +0530"; fractions are cut.
///
///     std::string strLine = "Date: " + KorToMailDate(oTime, 330);
///     CKorUTCTime oRead;
///     int nOffset = 0;
///     if (!KorFromMailDate("Tue, 5 Mar 2024 14:07 GMT (tea time)", oRead, &nOffset))
///         return false; // oRead and nOffset are as they were
///
/// Both functions take a time, also a CKorLocalTime, by its instant and look at no valid flag.
/// They may be called from any thread.
/// @param oTime           the instant
/// @param nOffsetMinutes  what the clock of the text is ahead of UTC, from -99:59 to 99:59 hours
/// @return the text; empty when its year is not in 0 to 9999 or the offset is beyond its range
TARVO_EXT_API std::string KorToMailDate(const CKorUTCTime& oTime, int nOffsetMinutes = 0);

/// Reads the date of a header, behind its name and colon, as RFC 5322 has it.
///
/// Day of the week and seconds may be missing; blanks, folded lines and comments may stand between
/// the parts, and names may have capital and small letters. Obsolete forms are read too: years of two
/// digits mean 1950 to 2049, of three digits 1900 and more; a zone may be named "UT", "GMT", "EST",
/// "EDT", "CST", "CDT", "MST", "MDT", "PST" or "PDT", and any other name or a military letter is taken
/// for UTC, because nobody knows its meaning. A second 60 is possible only at 23:59:60 UTC and is
/// taken for the next second.
/// @param strText               the text
/// @param[out] rTime            the instant; valid
/// @param[out] pnOffsetMinutes  the offset of the text; may be null
/// @return false when the text is anything else, the day of the week is not that of the date, or
/// the instant is beyond the range of times; time and offset are unchanged then
TARVO_EXT_API bool KorFromMailDate(const std::string& strText, CKorUTCTime& rTime,
                                   int* pnOffsetMinutes = nullptr);

/// @}
