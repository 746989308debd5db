#pragma once

#include <cstdint>

/// Lengths of time in ticks of 10 ns. They are unsigned because sums and products of ticks wrap
/// and most divisions of ticks are unsigned ones.
namespace KorTicks
{

constexpr std::uint64_t PER_MICROSECOND = 100;
constexpr std::uint64_t PER_MILLISECOND = 100000;
constexpr std::uint64_t PER_SECOND = 100000000;
constexpr std::uint64_t PER_MINUTE = 60 * PER_SECOND;
constexpr std::uint64_t PER_HOUR = 60 * PER_MINUTE;
constexpr std::uint64_t PER_DAY = 24 * PER_HOUR;

/// 1970-01-01 counted from the first of January of year 0.
constexpr std::uint64_t AT_UNIX_EPOCH = 719528 * PER_DAY;

/// The bits of a signed number, sign-extended, for arithmetic that wraps.
constexpr std::uint64_t Bits(long long nValue)
{
    return static_cast<std::uint64_t>(nValue);
}

/// The signed number of these bits.
constexpr long long Signed(std::uint64_t nBits)
{
    return static_cast<long long>(nBits);
}

} // namespace KorTicks
