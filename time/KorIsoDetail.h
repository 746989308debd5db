#pragma once

#include "time/KorDigitsDetail.h"
#include "time/KorInstantDetail.h"

#include <cstdint>

/// Takes the fraction of a second, if there is one: "." or "," and 1 to 9 digits.
/// @param[out] nTicks  the fraction in ticks, [0, KorInstant::PER_SECOND - 1]
/// @return false when a digit is missing
inline bool KorTakeFraction(KorDigits::CCursor& oText, std::int32_t& nTicks)
{
    constexpr unsigned MAX_DIGITS = 9;
    constexpr std::uint32_t SCALES[MAX_DIGITS] = {100000000, 10000000, 1000000, 100000, 10000,
                                                  1000,      100,      10,      1};
    nTicks = 0;
    if (!oText.Take('.') && !oText.Take(','))
        return true;
    std::uint32_t nNumber = 0;
    const unsigned nDigits = oText.TakeDigits(MAX_DIGITS, nNumber);
    if (nDigits == 0)
        return false;
    nTicks = static_cast<std::int32_t>(nNumber * SCALES[nDigits - 1] / 10); // nanoseconds
    return true;
}
