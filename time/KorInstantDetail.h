#pragma once

#include "time/KorCalendarDetail.h"
#include "time/KorTimeTicksDetail.h"
#include "time/KorUTCTime.h"

#include <cstdint>

/// Instants as signed counts, whatever clock a derived class shows.
namespace KorInstant
{

constexpr std::int64_t PER_SECOND = KorTicks::PER_SECOND;
constexpr std::int64_t SECONDS_PER_DAY = 86400;
/// 1970-01-01 in seconds since the first of January of year 0.
constexpr std::int64_t UNIX_EPOCH = KorCalendar::DAY_OF_UNIX_EPOCH * SECONDS_PER_DAY;

inline std::int64_t TicksOf(const CKorUTCTime& oTime)
{
    return oTime.CKorUTCTime::GetHighResolutionLocaltime();
}

/// Seconds since 1970-01-01, rounded down.
inline std::int64_t UnixSecondsOf(const CKorUTCTime& oTime)
{
    return KorCalendar::FloorQuotient(TicksOf(oTime), PER_SECOND) - UNIX_EPOCH;
}

/// A valid time.
inline CKorUTCTime FromTicks(std::int64_t nTicks)
{
    CKorUTCTime oTime(0LL);
    oTime.SetHighResolutionLocaltime(nTicks);
    return oTime;
}

/// Gives the ticks of a span, which none of its operations tells without loss.
struct SSpan : CKorTimeDiff
{
    static std::int64_t Ticks(const CKorTimeDiff& oSpan) { return oSpan.*(&SSpan::m_nValue); }
};

/// Adds whole seconds since year 0 and ticks in [0, PER_SECOND - 1].
/// @return whether the sum is a count of ticks; unchanged when not
inline bool Combine(std::int64_t nSeconds, std::int64_t nTicks, std::int64_t& rnSum)
{
    // Of one sign, so that the product cannot leave the range that the sum keeps to.
    if (nSeconds < 0 && nTicks != 0) {
        ++nSeconds;
        nTicks -= PER_SECOND;
    }
    std::int64_t nSum = 0;
    if (__builtin_mul_overflow(nSeconds, PER_SECOND, &nSum) ||
        __builtin_add_overflow(nSum, nTicks, &nSum))
        return false;
    rnSum = nSum;
    return true;
}

/// What a clock shows.
struct SClock
{
    std::int64_t nDay;    ///< since the first of January of year 0
    std::int32_t nSecond; ///< of the day
    std::int32_t nTick;   ///< of the second
};

/// What a clock shows that is some minutes ahead of UTC.
SClock ClockAt(std::int64_t nTicks, int nOffsetMinutes);

/// The ticks of a Unix second that a text gave, of its fraction, and when the text said second 60 of
/// one second more, which must be the first one of a day of UTC.
/// @return false when there is no such count of ticks, or no such leap second
bool FromText(std::int64_t nUnixSecond, bool bLeapSecond, std::int32_t nTick,
              std::int64_t& rnTicks);

/// Hands out what a text gave.
void Store(std::int64_t nTicks, int nOffset, CKorUTCTime& rTime, int* pnOffsetMinutes);

} // namespace KorInstant
