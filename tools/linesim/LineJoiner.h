#pragma once

/// @file
/// Two lines made one.

#include "tools/linesim/LineEnd.h"

#include <random>
#include <string>

/// Carries the bytes of each line to the other, and disturbs them when told to.
class LineJoiner
{
public:
    struct Settings
    {
        unsigned int m_nDropOne;  ///< loses one byte of so many, on average; 0: none
        unsigned int m_nSpoilOne; ///< changes one byte of so many, on average; 0: none
        unsigned int m_nSeed;     ///< the same seed disturbs the same bytes
    };

    /// Both lines outlive the joiner.
    LineJoiner(LineEnd& oLineA, LineEnd& oLineB, const Settings& oSettings);
    LineJoiner(const LineJoiner&) = delete;
    LineJoiner& operator=(const LineJoiner&) = delete;

private:
    void Carry(LineEnd& oFrom, LineEnd& oTo);
    std::string Disturbed(const std::string& strBytes);
    bool OneOf(unsigned int nCount);

    const Settings m_oSettings;
    std::mt19937 m_oRandom;
};
