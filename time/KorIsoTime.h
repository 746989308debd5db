#pragma once

/// @file
/// Texts of times and spans after ISO 8601. A new program should take these wherever a text leaves
/// the program or comes from outside: they are strict, and what is written reads back. The texts of
/// CKorUTCTime and CKorTimeDiff are for the formats of older programs.
///
///     KorToIsoString(oTime, 330); // "2024-03-05T14:07:09.250+05:30"
///     CKorUTCTime oRead;
///     int nOffset = 0;
///     if (!KorFromIsoString(strText, oRead, &nOffset))
///         return false; // oRead and nOffset are as they were
///
/// All functions take a time, also a CKorLocalTime, by its instant and look at no valid flag. They
/// may be called from any thread.

#include "KorExport.h"
#include "time/KorTimeDiff.h"
#include "time/KorUTCTime.h"

#include <string>

/// @addtogroup timetexts
/// @{

class CKorTimeZone;

/// The time as text, such as "2024-03-05T14:07:09.250+05:30", or with "Z" for the offset 0.
/// @param oTime           the instant
/// @param nOffsetMinutes  what the clock of the text is ahead of UTC, from -23:59 to 23:59 hours
/// @param nDigits         digits of the fraction, which is cut and not rounded: 0 for no fraction;
///                        above 9 they are 9
/// @return the text; empty when its year is not in 0 to 9999 or the offset is beyond its range
TARVO_EXT_API std::string KorToIsoString(const CKorUTCTime& oTime, int nOffsetMinutes = 0,
                                         unsigned int nDigits = 3);

/// Reads a time: with a zone as the last operation below does, with null as the other one.
TARVO_EXT_API bool KorFromIsoString(const std::string& strText, CKorUTCTime& rTime,
                                    const CKorTimeZone* pZone, int* pnOffsetMinutes);

/// Reads a time.
///
/// The date is `YYYY-MM-DD`, `YYYY-DDD`, `YYYY-Www-D`, or one of these without dashes, and alone
/// means midnight. After "T" or one blank follows `hh:mm`, `hh:mm:ss` or `hh:mm:ss` with "." or ","
/// and 1 to 9 digits, of which only whole ticks of 10 ns count; without colons when the date has no
/// dashes. Then "Z", `+hh`, `+hh:mm` or `+hhmm` (or the same with "-") up to 23:59 may follow;
/// without it the time is UTC. Letters are capital ones. 24:00:00 is the midnight that follows; a
/// second 60 is possible only at 23:59:60 UTC and is taken for the next second.
/// @param strText           the text; blanks around it or anything behind it make it no time
/// @param[out] rTime        the instant; valid
/// @param[out] pnOffsetMinutes  the offset of the text, 0 without one; may be null
/// @return false when the text is anything else, or the instant is beyond the range of times; time
/// and offset are unchanged then
inline bool KorFromIsoString(const std::string& strText, CKorUTCTime& rTime,
                             int* pnOffsetMinutes = nullptr)
{
    return KorFromIsoString(strText, rTime, nullptr, pnOffsetMinutes);
}

/// Reads a time in the same way, but takes a text without an offset for what clocks show in a zone.
/// A reading that occurs twice or never means the earlier instant, as CKorTimeZone::ToUtc() does
/// it; the offset is that of the zone at this instant, seconds of it rounded down.
inline bool KorFromIsoString(const std::string& strText, CKorUTCTime& rTime,
                             const CKorTimeZone& oZone, int* pnOffsetMinutes = nullptr)
{
    return KorFromIsoString(strText, rTime, &oZone, pnOffsetMinutes);
}

/// The span as text in days, hours, minutes and seconds, such as "PT1H30M", "-P1DT0.5S" or "PT0S";
/// exact.
TARVO_EXT_API std::string KorToIsoDuration(const CKorTimeDiff& oSpan);

/// Reads a span: "P", weeks `W` and days `D`, then "T", hours `H`, minutes `M` and seconds `S`. Each
/// may be missing but not all of them, nor all that follow "T". Numbers have any size; seconds may
/// have "." or "," and 1 to 9 more digits, of which only whole ticks of 10 ns count. A sign may
/// stand in front. Years and months have no fixed length and are refused.
/// @return false when the text is anything else, or the span is beyond the range of spans; it is
/// unchanged then
TARVO_EXT_API bool KorFromIsoDuration(const std::string& strText, CKorTimeDiff& rSpan);

/// @}
