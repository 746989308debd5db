#pragma once

#include "time/KorUTCTime.h"

#include <cstdint>
#include <tuple>

constexpr long long SECOND = 100000000LL;
constexpr long long HOUR = 3600 * SECOND;
constexpr long long DAY = 24 * HOUR;
constexpr long long EPOCH = 6216721920000000000LL;

inline CKorUTCTime At(long long nTicks)
{
    CKorUTCTime oTime;
    oTime.SetHighResolutionLocaltime(nTicks);
    return oTime;
}

inline CKorUTCTime Date(unsigned nYear, unsigned nMonth, unsigned nDay, unsigned nHour = 0)
{
    return CKorUTCTime(nDay, nMonth, nYear, nHour, 0, 0, 0, 0, 0);
}

/// A day at one tick before its end; the count of ticks exceeds its sign bit after the year 2922.
inline CKorUTCTime EndOfDay(int nDay)
{
    return At(static_cast<long long>(
        static_cast<std::uint64_t>(nDay + 1) * static_cast<std::uint64_t>(DAY) - 1));
}

using YearMonthDay = std::tuple<int, int, int>;

inline YearMonthDay DateOf(const CKorUTCTime& oTime)
{
    YearMonthDay oDate;
    oTime.CalcDate(std::get<0>(oDate), std::get<1>(oDate), std::get<2>(oDate));
    return oDate;
}
