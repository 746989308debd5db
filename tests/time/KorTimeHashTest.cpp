#include "tests/time/InstantSupport.h"
#include "time/KorLocalTime.h"

#include <gtest/gtest.h>
#include <limits>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>

namespace
{

TEST(KorTimeHash, IsEqualForEqualSpans)
{
    const std::hash<CKorTimeDiff> oHash;
    EXPECT_EQ(oHash(CKorTimeDiff(1500LL)), oHash(CKorTimeDiff(0, 0, 0, 1, 500, 0, 0)));
    EXPECT_NE(oHash(CKorTimeDiff(1500LL)), oHash(CKorTimeDiff(-1500LL)));
}

TEST(KorTimeHash, IsEqualForEqualInstantsWhateverTheirFlagsAndClocks)
{
    const std::hash<CKorUTCTime> oHash;
    CKorLocalTime oLocal;
    oLocal.SetHighResolutionLocaltime(42);
    oLocal.ChangeTimezone(5);
    EXPECT_EQ(oHash(TimeOfTicks(42)), oHash(oLocal));
    EXPECT_NE(oHash(TimeOfTicks(42)), oHash(TimeOfTicks(43)));
}

TEST(KorTimeHash, DiffersForTimesADayApart)
{
    std::unordered_set<std::size_t> setHashes;
    for (int nDay = 0; nDay < 100000; ++nDay)
        setHashes.insert(std::hash<CKorUTCTime>()(TimeOfUnix(nDay * std::int64_t{86400})));
    EXPECT_GT(setHashes.size(), 99000U);
}

TEST(KorTimeHash, LetsTimesAndSpansBeKeys)
{
    std::unordered_map<CKorUTCTime, int> mapTimes;
    std::unordered_set<CKorTimeDiff> setSpans;
    for (int i = 0; i < 1000; ++i) {
        mapTimes[TimeOfUnix(i % 100)] += i;
        setSpans.insert(CKorTimeDiff(i % 10));
    }
    EXPECT_EQ(100U, mapTimes.size());
    EXPECT_EQ(4550, mapTimes[TimeOfUnix(5)]);
    EXPECT_EQ(10U, setSpans.size());
}

TEST(KorTimeHash, DoesNotExistForLocalTimes)
{
    EXPECT_FALSE(std::is_default_constructible_v<std::hash<CKorLocalTime>>);
}

} // namespace
