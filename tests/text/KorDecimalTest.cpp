#include "text/KorStringDetail.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace
{

TEST(KorDecimal, WritesNumbersOfEveryLength)
{
    for (std::uint64_t nNumber = UINT64_MAX; nNumber != 0; nNumber /= 3) {
        EXPECT_EQ(std::to_string(nNumber), KorDecimal(nNumber));
        EXPECT_EQ(std::to_string(nNumber - 1), KorDecimal(nNumber - 1));
    }
}

TEST(KorDecimal, GoesOnAcrossThe32ndBit)
{
    for (const std::uint64_t nNumber :
         {std::uint64_t{UINT32_MAX}, std::uint64_t{UINT32_MAX} + 1, 10 * std::uint64_t{UINT32_MAX},
          10 * std::uint64_t{UINT32_MAX} + 9, 10 * std::uint64_t{UINT32_MAX} + 10})
        EXPECT_EQ(std::to_string(nNumber), KorDecimal(nNumber));
}

} // namespace
