#include "time/KorSystemZoneDetail.h"

#include <ctime>

#if __has_include(<sys/timeb.h>)
#include <sys/timeb.h>
// Weak, because C libraries have begun to drop the function and keep the header.
// NOLINTNEXTLINE(readability-redundant-declaration): it adds the weakness
extern "C" int ftime(struct timeb* pTime) __attribute__((weak));
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
    constexpr long SECONDS_PER_HOUR = 3600;
    tzset();
    const time_t nNow = time(nullptr);
    tm oNow = {};
    localtime_r(&nNow, &oNow);
    const bool bDaylight = oNow.tm_isdst > 0;
    // One hour less than the offset in force, and not the C library's `timezone`: whoever adds
    // the hour for the flag then gets the offset in force also where daylight saving is not one
    // hour forward, such as Dublin, whose winter time is kept as summer time minus one.
    const long nStandardOffset = oNow.tm_gmtoff - (bDaylight ? SECONDS_PER_HOUR : 0);
    return {static_cast<int>(-nStandardOffset / 60), bDaylight};
}

} // namespace

SKorSystemZone KorSystemZone()
{
    const SKorSystemZone oZone = ZoneOfFtime();
    return oZone.nMinutesWest != 0 || oZone.bDaylight ? oZone : ZoneOfZoneData();
}
