#pragma once

#include <cstdint>

// The clock and the C library's zone data, compiled with 64-bit times also where the platform's
// time_t has 32 bits: a board goes on past 2038. No time_t passes this header, because its width
// differs on both sides of it.

/// An instant since 1970-01-01 00:00 UTC.
struct SKorClockReading
{
    std::int64_t nSeconds;
    std::int32_t nMicroSeconds; ///< [0, 999999]
};

/// The system's clock.
SKorClockReading KorReadSystemClock();

/// What the process's zone is at an instant.
struct SKorZoneReading
{
    std::int32_t nOffset; ///< seconds east of Greenwich, summer time included
    bool bSummerTime;     ///< the flag of the zone data, tm_isdst
};

/// Asks the C library for the process's zone, a change of TZ noticed. Safe in threads while none
/// changes the environment.
/// @param nUnixSeconds  the instant, in seconds since 1970-01-01 00:00 UTC
/// @param[out] oZone    the zone; unchanged when the result is false
/// @return whether the C library could tell: its time_t may be too small, or the year for its int
bool KorReadZoneData(std::int64_t nUnixSeconds, SKorZoneReading& oZone);
