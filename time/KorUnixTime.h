#pragma once

/// @file
/// Times as the operating system and `<chrono>` count them. A new program should take these
/// conversions: `CKorUTCTime oTime = 1700000000` and `oTime = time(nullptr)` compile too, and mean
/// something else.

#include "KorExport.h"
#include "time/KorTimeDiff.h"
#include "time/KorUTCTime.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <ratio>
#include <type_traits>

/// @addtogroup instants
/// @{

/// The instant that lies @p nSeconds seconds and @p nNanoseconds nanoseconds behind 1970-01-01
/// 00:00 UTC, rounded down to ticks of 10 ns; valid. Both may be negative, and nanoseconds of a
/// second or more carry. Beyond the range of times it is the nearest end of it, *not* valid.
///
///     timespec oNow;
///     clock_gettime(CLOCK_REALTIME, &oNow);
///     CKorUTCTime oTime = KorFromUnixTime(oNow.tv_sec, oNow.tv_nsec);
///     KorToUnixTime(oTime) == oNow.tv_sec;
///     KorFromUnixTime(-1); // 1969-12-31 23:59:59
///
/// These functions take every time, also a CKorLocalTime, by its instant, and look at no valid
/// flag. They may be called from any thread.
TARVO_EXT_API CKorUTCTime KorFromUnixTime(std::int64_t nSeconds, std::int32_t nNanoseconds = 0);

/// Seconds since 1970-01-01 00:00 UTC, negative before it, rounded down.
TARVO_EXT_API std::int64_t KorToUnixTime(const CKorUTCTime& oTime);

/// Nanoseconds since 1970-01-01 00:00 UTC, which 64 bits hold for the years 1677 to 2262: before
/// and after them the least and the greatest number.
TARVO_EXT_API std::int64_t KorToUnixNanoseconds(const CKorUTCTime& oTime);

/// The instant of a `std::chrono` time, rounded down to ticks of 10 ns; valid. Beyond the range of
/// times it is the nearest end of it, *not* valid.
inline CKorUTCTime KorFromSystemClock(std::chrono::system_clock::time_point oTime)
{
    using namespace std::chrono;
    const auto oSinceEpoch = oTime.time_since_epoch();
    // Not rounded down, because the least time has no whole second below it.
    const auto oSeconds = duration_cast<seconds>(oSinceEpoch);
    const auto oRest = duration_cast<nanoseconds>(oSinceEpoch - oSeconds);
    return KorFromUnixTime(oSeconds.count(), static_cast<std::int32_t>(oRest.count()));
}

/// The `std::chrono` time of an instant, rounded down; beyond its range the nearest end of it.
inline std::chrono::system_clock::time_point KorToSystemClock(const CKorUTCTime& oTime)
{
    using Clock = std::chrono::system_clock;
    const std::chrono::nanoseconds oSinceEpoch(KorToUnixNanoseconds(oTime));
    return Clock::time_point(std::chrono::floor<Clock::duration>(oSinceEpoch));
}

/// Ticks of 10 ns, in which times and spans count.
using CKorTickDuration = std::chrono::duration<std::int64_t, std::ratio<1, 100000000>>;

/// The duration of a span; exact.
TARVO_EXT_API CKorTickDuration KorToDuration(const CKorTimeDiff& oDiff);

/// For KorFromDuration() only: numbers of periods P as numbers of ticks.
template <class P>
class TKorTicksOf
{
public:
    /// A number of whole periods, rounded down and saturating.
    template <class N>
    static std::int64_t Whole(N nCount)
    {
        static_assert(DIVISOR == 1 || P::num <= Limits::max() / FACTOR / DIVISOR,
                      "this ratio cannot be turned into ticks in 64 bits");
        // Both quotients have the sign of the count: when the whole fits, each of them does.
        const N nQuotient = nCount / static_cast<N>(DIVISOR);
        std::int64_t nTicks = 0;
        if (__builtin_mul_overflow(nQuotient, P::num, &nTicks) ||
            __builtin_mul_overflow(nTicks, FACTOR, &nTicks) ||
            __builtin_add_overflow(nTicks, Rest(nCount % static_cast<N>(DIVISOR)), &nTicks))
            return nQuotient > 0 ? Limits::max() : Limits::min();
        return nTicks;
    }

    /// A floating-point number of periods, rounded down and saturating; 0 for no number.
    template <class N>
    static std::int64_t Floating(N nCount)
    {
        const N nTicks = std::floor(nCount * static_cast<N>(P::num) * static_cast<N>(FACTOR) /
                                    static_cast<N>(DIVISOR));
        constexpr N END = 9223372036854775808.0;
        if (nTicks >= END)
            return Limits::max();
        return nTicks >= -END  ? static_cast<std::int64_t>(nTicks)
               : nTicks < -END ? Limits::min()
                               : 0;
    }

private:
    using Limits = std::numeric_limits<std::int64_t>;
    static constexpr std::int64_t PER_SECOND = CKorTickDuration::period::den;
    // P lasts P::num * FACTOR / DIVISOR ticks.
    static constexpr std::int64_t FACTOR = PER_SECOND / std::gcd(PER_SECOND, std::int64_t{P::den});
    static constexpr std::int64_t DIVISOR = P::den / std::gcd(PER_SECOND, std::int64_t{P::den});

    template <class N>
    static std::int64_t Rest(N nCount)
    {
        const std::int64_t nProduct = static_cast<std::int64_t>(nCount) * P::num * FACTOR;
        return nProduct / DIVISOR - (nProduct % DIVISOR < 0 ? 1 : 0);
    }
};

/// The span of a `std::chrono` duration of any unit, rounded down to ticks of 10 ns; beyond the
/// range of spans the nearest end of it. A floating-point duration that is no number gives the
/// empty span.
///
///     KorFromDuration(std::chrono::minutes(90)).GetTotalSeconds(); // 5400
template <class R, class P>
CKorTimeDiff KorFromDuration(std::chrono::duration<R, P> oDuration)
{
    using Period = TKorTicksOf<typename P::type>;
    CKorTimeDiff oSpan;
    if constexpr (std::chrono::treat_as_floating_point_v<R>) {
        using N = std::common_type_t<R, double>;
        oSpan.SetTimeDiff(Period::Floating(static_cast<N>(oDuration.count())), true);
    } else {
        using N = std::conditional_t<std::is_unsigned_v<R>, std::uint64_t, std::int64_t>;
        oSpan.SetTimeDiff(Period::Whole(static_cast<N>(oDuration.count())), true);
    }
    return oSpan;
}

/// @}
