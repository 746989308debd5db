// The clocks as this program defines them, in place of the C library's: the library under test
// arrives here. No header of the C library that declares one of these calls may be included.

#include <dlfcn.h>
#include <stdint.h>

/// What the clock is ahead of the true time, in seconds. The monotonic clock knows nothing of it.
int64_t g_nClockStep = 0;

namespace
{

constexpr int REAL_TIME_CLOCK = 0;

/// Seconds and a fraction, as the platform has them.
struct NativeTime
{
    long nSeconds;
    long nFraction;
};

/// On platforms whose times were made longer.
struct LongTime
{
    int64_t nSeconds;
    int64_t nFraction;
};

template <typename TTime, typename... TArgs>
int Tell(const char* pszSymbol, bool bStep, TTime* pTime, TArgs... args)
{
    const int nResult = reinterpret_cast<int (*)(TArgs...)>(dlsym(RTLD_NEXT, pszSymbol))(args...);
    if (bStep)
        pTime->nSeconds += static_cast<decltype(pTime->nSeconds)>(g_nClockStep);
    return nResult;
}

} // namespace

extern "C" {

int gettimeofday(NativeTime* pTime, void* pZone)
{
    return Tell("gettimeofday", true, pTime, pTime, pZone);
}

int __gettimeofday64(LongTime* pTime, void* pZone) // glibc
{
    return Tell("__gettimeofday64", true, pTime, pTime, pZone);
}

int __gettimeofday_time64(LongTime* pTime, void* pZone) // musl
{
    return Tell("__gettimeofday_time64", true, pTime, pTime, pZone);
}

int clock_gettime(int nClock, NativeTime* pTime)
{
    return Tell("clock_gettime", nClock == REAL_TIME_CLOCK, pTime, nClock, pTime);
}

int __clock_gettime64(int nClock, LongTime* pTime)
{
    return Tell("__clock_gettime64", nClock == REAL_TIME_CLOCK, pTime, nClock, pTime);
}
}
