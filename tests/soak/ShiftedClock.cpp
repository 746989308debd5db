// Preloaded into one process: its time of day is that of the machine plus an offset, which others
// write into a file at any time. Monotonic clocks stay as they are, as at a real clock step.

#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <time.h>

namespace
{

/// The offset in nanoseconds, which the file SHIFTED_CLOCK holds as eight bytes.
std::int64_t Offset()
{
    static const volatile std::int64_t* const pnOffset = [] {
        const int hFile = open(getenv("SHIFTED_CLOCK"), O_RDONLY | O_CLOEXEC);
        void* const pFile = mmap(nullptr, sizeof(std::int64_t), PROT_READ, MAP_SHARED, hFile, 0);
        return pFile == MAP_FAILED ? nullptr : static_cast<std::int64_t*>(pFile);
    }();
    return pnOffset == nullptr ? 0 : *pnOffset;
}

constexpr std::int64_t NANOSECONDS = 1000000000;

} // namespace

extern "C" int clock_gettime(clockid_t nClock, timespec* pTime) noexcept
{
    using Function = int (*)(clockid_t, timespec*);
    static const auto pfnReal = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int nResult = pfnReal(nClock, pTime);
    if (nResult != 0 || (nClock != CLOCK_REALTIME && nClock != CLOCK_REALTIME_COARSE))
        return nResult;
    const std::int64_t nNow = pTime->tv_sec * NANOSECONDS + pTime->tv_nsec + Offset();
    pTime->tv_sec = static_cast<time_t>(nNow / NANOSECONDS);
    pTime->tv_nsec = static_cast<long>(nNow % NANOSECONDS);
    return nResult;
}

extern "C" int gettimeofday(timeval* __restrict pTime, void* __restrict) noexcept
{
    timespec oNow = {};
    const int nResult = clock_gettime(CLOCK_REALTIME, &oNow);
    *pTime = {oNow.tv_sec, oNow.tv_nsec / 1000};
    return nResult;
}

extern "C" time_t time(time_t* pTime) noexcept
{
    timespec oNow = {};
    clock_gettime(CLOCK_REALTIME, &oNow);
    if (pTime != nullptr)
        *pTime = oNow.tv_sec;
    return oNow.tv_sec;
}
