#pragma once

/// @file
/// Time zones with their history and their summer time. A new program should take CKorTimeZone, or
/// CKorZoneTime for a time that knows its offset; the zone of CKorLocalTime is a whole number of
/// hours that the program has to keep right itself.

#include "KorExport.h"
#include "time/KorUTCTime.h"

#include <memory>
#include <string>

/// @addtogroup zones
/// @{

class CKorZoneData;

/// Seconds east of Greenwich at an instant, in the process's zone.
///
/// That is the zone that the C library uses: what the environment variable TZ names, or else
/// /etc/localtime. A change of either is noticed. The zone is read as CKorTimeZone::Load() does it,
/// so that instants after 2038 and new versions of zone files are no matter; only where that finds
/// nothing, such as a zone with leap seconds, the C library is asked, which takes what it cannot
/// read for UTC.
///
/// May be called from any thread while none changes the environment. The time counts by its
/// instant, also that of a CKorLocalTime, and its valid flag does not matter.
TARVO_EXT_API int KorGetUtcOffset(const CKorUTCTime& oTime);

/// A time zone: what clocks show there at any instant.
///
/// It is UTC until a Load() succeeds. A zone is a value that can be copied cheaply; any number of
/// threads may ask one object at the same time while none loads or assigns it.
///
/// Any count of ticks is a legal instant, the times before year 0 included, which are negative.
/// All functions take a time, also a CKorLocalTime, by its instant and look at no valid flag.
///
///     CKorTimeZone oZone;
///     if (!oZone.Load("Europe/Berlin"))
///         return false;
///     CKorUTCTime oTime = oZone.ToUtc(2024, 10, 27, 2, 30, 0, CKorTimeZone::CHOICE_LATER);
///     oZone.GetOffset(oTime); // 3600; with CHOICE_EARLIER it is 7200
class TARVO_EXT_API CKorTimeZone
{
public:
    /// Which instant is meant by a clock reading that occurs twice or never.
    enum EChoice
    {
        CHOICE_EARLIER, ///< the earlier one
        CHOICE_LATER    ///< the later one
    };

    /// How often a clock shows a reading.
    enum EKind
    {
        KIND_UNIQUE, ///< once, as nearly always
        KIND_TWICE,  ///< again after the clock was put back
        KIND_NEVER   ///< the clock was put forward over it, or it is not a date and time at all
    };

    /// Loads a zone.
    ///
    /// A name that begins with "/" is the path of a zone file; any other one is a file below the
    /// directory that the environment variable TZDIR names, or else /usr/share/zoneinfo, and must
    /// not have a part "..". When there is no such file, the name is taken for a rule as POSIX
    /// defines TZ, such as "CET-1CEST,M3.5.0,M10.5.0/3"; hours of a change may have a sign and
    /// reach 167, and summer time without dates is that of the United States. A ":" in front is
    /// skipped.
    ///
    /// Zone files are TZif of the versions 1 to 4 (RFC 9636), and must be regular files. One that
    /// is damaged in any way, that something follows, or that counts leap seconds is refused.
    /// @param pszName  the name; null or "" loads the process's zone as it is now, which is UTC
    ///                 when TZ names nothing that exists
    /// @return false when there is no such zone or it is refused; this object is unchanged then
    bool Load(const char* pszName);

    /// Seconds east of Greenwich at an instant.
    int GetOffset(const CKorUTCTime& oTime) const;

    /// Whether the zone's data call it summer time, as `tm_isdst` does: in Dublin it is winter that
    /// they do.
    bool IsSummerTime(const CKorUTCTime& oTime) const;

    /// The abbreviation in use at an instant, such as "CEST" or "+0530".
    std::string GetAbbreviation(const CKorUTCTime& oTime) const;

    /// How often clocks show a reading.
    /// @param nYear    any year of the Gregorian calendar
    /// @param nMonth   1 to 12
    /// @param nDay     1 to the length of the month
    /// @param nHour    0 to 23
    /// @param nMinute  0 to 59
    /// @param nSecond  0 to 59
    EKind GetKind(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond) const;

    /// The instant at which clocks show a reading; valid. For a reading that never occurs the
    /// choice is between the instants that the offsets before and after the gap give.
    /// @return a time that is not valid when a part is out of range, or when the instant is beyond
    /// the range of times, of which it is the nearest end then
    CKorUTCTime ToUtc(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond,
                      EChoice eChoice = CHOICE_EARLIER) const;

protected:
    std::shared_ptr<const CKorZoneData> m_pData; ///< The zone's changes; null for UTC.
};

/// @}
