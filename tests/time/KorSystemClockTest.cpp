// A program of its own, because its clock takes the place of the C library's. With 64-bit times,
// so that the C library's headers give the clock the name by which the library calls it.
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64

#include "tests/time/TimeZoneScope.h"
#include "time/KorLocalTime.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <sys/time.h>

namespace
{

std::int64_t g_nSeconds;
constexpr int MICROSECONDS = 987654;

} // namespace

extern "C" int gettimeofday(timeval* pTime, void*) noexcept
{
    pTime->tv_sec = static_cast<time_t>(g_nSeconds);
    pTime->tv_usec = MICROSECONDS;
    return 0;
}

namespace
{

/// 2038-01-19 03:14:10 UTC: what no signed number of 32 bits holds.
constexpr std::int64_t BEYOND_32_BITS = 2147483650;

class KorSystemClock : public testing::Test
{
protected:
    KorSystemClock() { g_nSeconds = BEYOND_32_BITS; }
};

TEST_F(KorSystemClock, ReadsOnPast2038)
{
    CKorUTCTime oExpected(19, 1, 2038, 3, 14, 10, 987, 654, 0);
    EXPECT_EQ(oExpected, CKorUTCTime::CurrentTime());
    g_nSeconds = 16725225600; // 2500-01-01
    EXPECT_EQ("01.01.2500 00:00:00.987",
              KorToString(CKorUTCTime::CurrentTime(), CKorUTCTime::eDateTimeMs));
}

TEST_F(KorSystemClock, ReadsTheZoneOnPast2038)
{
    // The 32 bits that are left of 2038 would lie in December 1901, in the other half of the year.
    const TimeZoneScope oScope("ZZZ-3YYY,J1/0,J100/0");
    EXPECT_EQ(4, CKorLocalTime::GetCurrentTimezone());
    const CKorLocalTime oNow = CKorLocalTime::CurrentLocalTime();
    EXPECT_EQ("19.01.2038 07:14:10.987", KorToString(oNow, CKorUTCTime::eDateTimeMs));
    g_nSeconds += 200 * std::int64_t(86400);
    EXPECT_EQ(3, CKorLocalTime::GetCurrentTimezone());
}

} // namespace
