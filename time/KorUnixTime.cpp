#include "time/KorUnixTime.h"

#include "time/KorInstantDetail.h"

using KorCalendar::FloorQuotient;
using KorCalendar::FloorRest;

namespace
{

using Limits = std::numeric_limits<std::int64_t>;

constexpr std::int64_t NANOSECONDS = 1000000000;
constexpr std::int64_t NANOSECONDS_PER_TICK = 10;

CKorUTCTime NearestEnd(bool bPast)
{
    CKorUTCTime oTime;
    oTime.SetHighResolutionLocaltime(bPast ? Limits::min() : Limits::max());
    return oTime;
}

} // namespace

CKorUTCTime KorFromUnixTime(std::int64_t nSeconds, std::int32_t nNanoseconds)
{
    const std::int64_t nCarry = FloorQuotient(nNanoseconds, NANOSECONDS);
    const std::int64_t nTicks = FloorRest(nNanoseconds, NANOSECONDS) / NANOSECONDS_PER_TICK;
    std::int64_t nSum = 0;
    if (__builtin_add_overflow(nSeconds, nCarry + KorInstant::UNIX_EPOCH, &nSum) ||
        !KorInstant::Combine(nSum, nTicks, nSum))
        return NearestEnd(nSeconds < 0);
    return KorInstant::FromTicks(nSum);
}

std::int64_t KorToUnixTime(const CKorUTCTime& oTime)
{
    return KorInstant::UnixSecondsOf(oTime);
}

std::int64_t KorToUnixNanoseconds(const CKorUTCTime& oTime)
{
    constexpr std::int64_t EPOCH = KorInstant::UNIX_EPOCH * KorInstant::PER_SECOND;
    const std::int64_t nTicks = KorInstant::TicksOf(oTime);
    std::int64_t nNanoseconds = 0;
    if (__builtin_sub_overflow(nTicks, EPOCH, &nNanoseconds) ||
        __builtin_mul_overflow(nNanoseconds, NANOSECONDS_PER_TICK, &nNanoseconds))
        return nTicks < EPOCH ? Limits::min() : Limits::max();
    return nNanoseconds;
}

CKorTickDuration KorToDuration(const CKorTimeDiff& oDiff)
{
    return CKorTickDuration(KorInstant::SSpan::Ticks(oDiff));
}
