#pragma once

/// @file
/// Times that know their offset from UTC. A new program should take CKorZoneTime to show a time to
/// people: CKorLocalTime knows whole hours only and compares clocks, not instants.

#include "KorExport.h"
#include "time/KorTimeDiff.h"
#include "time/KorUTCTime.h"

#include <cstdint>
#include <iosfwd>
#include <string>

/// @addtogroup zones
/// @{

class CKorTimeZone;

/// An instant, and how many minutes a clock is ahead of UTC that shows it.
///
/// Comparisons and differences are those of the instants, whatever the offsets. Any count of ticks
/// is a legal instant, and any number a legal offset. A time is taken by its instant, also a
/// CKorLocalTime, and its valid flag does not matter. This is a plain value without locks: one
/// object must not be changed by one thread while another uses it.
///
///     CKorTimeZone oZone;
///     oZone.Load("Asia/Kolkata");
///     CKorZoneTime oTime(KorFromUnixTime(1709647629), oZone);
///     oTime.GetHour();  // 19
///     oTime.ToString(); // "2024-03-05T19:37:09.000+05:30"
class TARVO_EXT_API CKorZoneTime
{
public:
    /// The first of January of year 0 with the offset 0.
    CKorZoneTime() : m_nTicks(0), m_nOffsetMinutes(0) {}
    /// An instant with the offset that the process's zone has then, see KorGetUtcOffset(). Seconds
    /// of an offset are rounded down.
    explicit CKorZoneTime(const CKorUTCTime& oTime);
    /// An instant with an offset in minutes, east of Greenwich positive.
    CKorZoneTime(const CKorUTCTime& oTime, int nOffsetMinutes);
    /// An instant with the offset that a zone has then. Seconds of an offset are rounded down.
    CKorZoneTime(const CKorUTCTime& oTime, const CKorTimeZone& oZone);

    /// The system clock's instant in the process's zone. May be called from any thread while none
    /// changes the environment.
    static CKorZoneTime CurrentTime() { return CKorZoneTime(CKorUTCTime::CurrentTime()); }
    /// The system clock's instant in a zone.
    static CKorZoneTime CurrentTime(const CKorTimeZone& oZone)
    {
        return CKorZoneTime(CKorUTCTime::CurrentTime(), oZone);
    }

    /// The instant; valid.
    CKorUTCTime GetUtc() const;
    /// The offset in minutes, east of Greenwich positive.
    int GetOffsetMinutes() const { return m_nOffsetMinutes; }

    /// @name What the clock shows
    /// @{

    /// Year; 0 and negative before year 1.
    int GetYear() const { return GetPart(PART_YEAR); }
    /// Month, 1 to 12.
    int GetMonth() const { return GetPart(PART_MONTH); }
    /// Day of the month, from 1.
    int GetDay() const { return GetPart(PART_DAY); }
    /// Hour, 0 to 23.
    int GetHour() const { return GetPart(PART_HOUR); }
    /// Minute, 0 to 59.
    int GetMinute() const { return GetPart(PART_MINUTE); }
    /// Second, 0 to 59.
    int GetSecond() const { return GetPart(PART_SECOND); }
    /// Millisecond of the second, 0 to 999.
    int GetMilliSecond() const { return GetPart(PART_MILLISECOND); }
    /// Microsecond of the millisecond, 0 to 999.
    int GetMicroSecond() const { return GetPart(PART_MICROSECOND); }
    /// Nanosecond of the microsecond, 0 to 990, always a multiple of 10.
    int GetNanoSecond() const { return GetPart(PART_NANOSECOND); }
    /// Day of the week: 1 is Monday, 7 is Sunday.
    int GetWeekDay() const { return GetPart(PART_WEEKDAY); }
    /// Day of the year, from 1.
    int GetDayOfYear() const { return GetPart(PART_DAY_OF_YEAR); }
    /// @}

    /// The time as text, see KorToIsoString(); empty when that has no text for it.
    std::string ToString(unsigned int nDigits = 3) const;

    /// Sets instant and offset to those of a text, see KorFromIsoString(): without an offset the
    /// text is in UTC.
    /// @return false when it is not a time; this one is unchanged then
    bool FromString(const std::string& strText);

    /// @name Comparisons of the instants
    /// @{

    /// Whether both are the same instant.
    bool operator==(const CKorZoneTime& oOther) const { return m_nTicks == oOther.m_nTicks; }
    /// Whether the instants differ.
    bool operator!=(const CKorZoneTime& oOther) const { return m_nTicks != oOther.m_nTicks; }
    /// Whether this instant is earlier.
    bool operator<(const CKorZoneTime& oOther) const { return m_nTicks < oOther.m_nTicks; }
    /// Whether this instant is not later.
    bool operator<=(const CKorZoneTime& oOther) const { return m_nTicks <= oOther.m_nTicks; }
    /// Whether this instant is later.
    bool operator>(const CKorZoneTime& oOther) const { return m_nTicks > oOther.m_nTicks; }
    /// Whether this instant is not earlier.
    bool operator>=(const CKorZoneTime& oOther) const { return m_nTicks >= oOther.m_nTicks; }
    /// @}

    /// The span from @p oOther to this time, negative when this is the earlier one; beyond the
    /// range of spans the nearest end of it.
    CKorTimeDiff operator-(const CKorZoneTime& oOther) const;

protected:
    std::int64_t m_nTicks;         ///< The instant in ticks of 10 ns since the year 0.
    std::int32_t m_nOffsetMinutes; ///< What the clock is ahead of UTC.

private:
    enum EPart
    {
        PART_YEAR,
        PART_MONTH,
        PART_DAY,
        PART_DAY_OF_YEAR,
        PART_WEEKDAY,
        PART_HOUR,
        PART_MINUTE,
        PART_SECOND,
        PART_MILLISECOND,
        PART_MICROSECOND,
        PART_NANOSECOND
    };
    int GetPart(EPart ePart) const;
};

/// Writes CKorZoneTime::ToString() as the stream writes any text.
/// @return the stream
TARVO_EXT_API std::ostream& operator<<(std::ostream& oStream, const CKorZoneTime& oTime);

/// @}
