#pragma once

#include "time/KorUTCTime.h"

#include <cstdint>
#include <ostream>
#include <random>

constexpr std::int64_t TICKS_PER_SECOND = 100000000;
constexpr std::int64_t EPOCH_SECONDS = 62167219200;

/// The valid time of a tick count, made by the core operations alone.
inline CKorUTCTime TimeOfTicks(std::int64_t nTicks)
{
    CKorUTCTime oTime(0LL);
    oTime.SetHighResolutionLocaltime(nTicks);
    return oTime;
}

inline CKorUTCTime TimeOfUnix(std::int64_t nSeconds, std::int64_t nTicks = 0)
{
    return TimeOfTicks((nSeconds + EPOCH_SECONDS) * TICKS_PER_SECOND + nTicks);
}

inline std::int64_t TicksOf(const CKorUTCTime& oTime)
{
    return oTime.CKorUTCTime::GetHighResolutionLocaltime();
}

/// The same numbers in every run.
class RandomTicks
{
public:
    std::int64_t Next(std::int64_t nFrom, std::int64_t nTo)
    {
        return std::uniform_int_distribution<std::int64_t>(nFrom, nTo)(m_oEngine);
    }
    std::int64_t Next() { return static_cast<std::int64_t>(m_oEngine()); }

private:
    std::mt19937_64 m_oEngine{20240305};
};
