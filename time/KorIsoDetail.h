#pragma once

#include "time/KorDigitsDetail.h"
#include "time/KorInstantDetail.h"

#include <cstdint>

/// Takes the fraction of a second, if there is one: "." or "," and 1 to 9 digits.
/// @param[out] nTicks  the fraction in ticks, [0, KorInstant::PER_SECOND - 1]
/// @return false when a digit is missing
bool KorTakeFraction(KorDigits::CCursor& oText, std::int32_t& nTicks);
