// Before all headers: the C library then has 64-bit times here, if it has any.
#define _TIME_BITS 64

#include "time/KorSystemClockDetail.h"

#include <ctime>
#include <sys/time.h>

SKorClockReading KorReadSystemClock()
{
    timeval oNow;
    gettimeofday(&oNow, nullptr);
    return {oNow.tv_sec, static_cast<std::int32_t>(oNow.tv_usec)};
}

bool KorReadZoneData(std::int64_t nUnixSeconds, SKorZoneReading& oZone)
{
    const auto nTime = static_cast<time_t>(nUnixSeconds);
    tm oLocal = {};
    tzset();
    if (nTime != nUnixSeconds || localtime_r(&nTime, &oLocal) == nullptr)
        return false;
    oZone = {static_cast<std::int32_t>(oLocal.tm_gmtoff), oLocal.tm_isdst > 0};
    return true;
}
