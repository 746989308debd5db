// The clock as this program defines it, in place of the C library's: the library under test arrives
// here. No header of the C library that declares one of these calls may be included.

#include <stdint.h>
#include <time.h>

/// What the clock is ahead of the true time, in seconds.
int64_t g_nClockStep = 0;

namespace
{

struct NativeTime
{
    long nSeconds;
    long nMicroSeconds;
};

/// On platforms whose times were made longer.
struct LongTime
{
    int64_t nSeconds;
    int64_t nMicroSeconds;
};

template <typename TTime>
int Tell(TTime* pTime)
{
    timespec oNow;
    clock_gettime(CLOCK_REALTIME, &oNow);
    pTime->nSeconds = static_cast<decltype(pTime->nSeconds)>(oNow.tv_sec + g_nClockStep);
    pTime->nMicroSeconds = static_cast<decltype(pTime->nMicroSeconds)>(oNow.tv_nsec / 1000);
    return 0;
}

} // namespace

extern "C" {

int gettimeofday(NativeTime* pTime, void*)
{
    return Tell(pTime);
}

int __gettimeofday64(LongTime* pTime, void*) // glibc
{
    return Tell(pTime);
}

int __gettimeofday_time64(LongTime* pTime, void*) // musl
{
    return Tell(pTime);
}
}
