#pragma once

#include "tests/support/Seed.h"
#include "tests/time/TimeForms.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__arm__)
constexpr int ROUNDS = 3000;
#else
constexpr int ROUNDS = 30000;
#endif

/// Random choices.
class Dice
{
public:
    explicit Dice(unsigned nSeed) : m_oEngine(nSeed) {}
    /// 0 to nSides - 1.
    int Roll(int nSides) { return static_cast<int>(m_oEngine() % static_cast<unsigned>(nSides)); }
    bool OneIn(int nSides) { return Roll(nSides) == 0; }
    long long Bits()
    {
        const std::uint64_t nHigh = m_oEngine();
        return static_cast<long long>(nHigh << 32 | m_oEngine());
    }

private:
    std::mt19937 m_oEngine;
};

class KorTimeTextModel : public testing::Test
{
protected:
    KorTimeTextModel() : m_nSeed(TestSeed()), m_oDice(m_nSeed) {}

    const unsigned m_nSeed;
    Dice m_oDice;
};

/// An instant somewhere in the years that texts can hold, or anywhere at all.
inline long long RandomTicks(Dice& oDice)
{
    const long long nTicks = oDice.Bits();
    return oDice.OneIn(8) ? nTicks : static_cast<long long>(static_cast<std::uint64_t>(nTicks) / 2);
}
