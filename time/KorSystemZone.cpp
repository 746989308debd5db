#include "time/KorSystemZoneDetail.h"

#include "time/KorSystemClockDetail.h"

#if __has_include(<sys/timeb.h>)
#include <sys/timeb.h>
// Weak, because C libraries have begun to drop the function and keep the header.
#pragma weak ftime
#define KOR_HAS_FTIME
#endif

namespace
{

/// What ftime() answers. Today's C libraries have no answer but zone 0 without daylight saving.
SKorSystemZone ZoneOfFtime()
{
#ifdef KOR_HAS_FTIME
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    if (ftime != nullptr) {
        struct timeb oTime = {};
        ftime(&oTime);
        return {oTime.timezone, oTime.dstflag != 0};
    }
#pragma GCC diagnostic pop
#endif
    return {0, false};
}

SKorSystemZone ZoneOfZoneData()
{
    constexpr std::int32_t SECONDS_PER_HOUR = 3600;
    SKorZoneReading oZone = {0, false};
    KorReadZoneData(KorReadSystemClock().nSeconds, oZone);
    // One hour less than the offset in force, and not the C library's `timezone`: whoever adds
    // the hour for the flag then gets the offset in force also where daylight saving is not one
    // hour forward, such as Dublin, whose winter time is kept as summer time minus one.
    const std::int32_t nStandardOffset = oZone.nOffset - (oZone.bSummerTime ? SECONDS_PER_HOUR : 0);
    return {-nStandardOffset / 60, oZone.bSummerTime};
}

} // namespace

SKorSystemZone KorSystemZone()
{
    const SKorSystemZone oZone = ZoneOfFtime();
    return oZone.nMinutesWest != 0 || oZone.bDaylight ? oZone : ZoneOfZoneData();
}
