#pragma once

#include <algorithm>
#include <cstdint>
#include <random>

/// How long to wait before the next attempt to reach a broker.
///
/// The wait is random, evenly spread below a limit that doubles with each attempt: gateways that
/// lost their broker at the same moment come back one by one.
class ReconnectBackoff
{
public:
    static constexpr unsigned int FIRST_LIMIT_MS = 2000;
    static constexpr unsigned int LEAST_MS = 100; ///< of every wait

    /// @param nLongestMs  where the limit stops growing
    /// @param nSeed       of the random numbers; each gateway has another one
    ReconnectBackoff(unsigned int nLongestMs, std::uint32_t nSeed)
        : m_nLongestMs(std::max(nLongestMs, FIRST_LIMIT_MS)), m_oDice(nSeed)
    {
    }

    /// The wait before the next attempt, in milliseconds.
    unsigned int Next()
    {
        const unsigned int nLimit = m_nLimitMs;
        m_nLimitMs = nLimit > m_nLongestMs / 2 ? m_nLongestMs : nLimit * 2;
        return std::uniform_int_distribution<unsigned int>(LEAST_MS, nLimit)(m_oDice);
    }

    /// The broker has accepted us.
    void Reset() { m_nLimitMs = FIRST_LIMIT_MS; }

private:
    unsigned int m_nLongestMs;
    unsigned int m_nLimitMs = FIRST_LIMIT_MS;
    std::mt19937 m_oDice;
};
