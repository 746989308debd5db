#include "tests/time/UTCTimeTest.h"
#include "time/KorUTCTime.h"

#include <climits>
#include <cstdint>
#include <gtest/gtest.h>

namespace
{

TEST(KorUTCTime, AddTimeMovesForward)
{
    CKorUTCTime oTime(28, 2, 2024, 23, 59, 59, 999, 999, 990);
    oTime.AddTime(0, 0, 0, 0, 0, 0, 10);
    EXPECT_EQ(Date(2024, 2, 29), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
    oTime.AddTime(1, 25, 61, 61, 1001, 1001, 1010);
    EXPECT_EQ(CKorUTCTime(2, 3, 2024, 2, 2, 2, 2, 2, 10), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, SubTimeMovesBack)
{
    CKorUTCTime oTime = Date(2024, 3, 1);
    oTime.SubTime(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 29), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, AddingNothingClearsTheValidFlag)
{
    CKorUTCTime oTime = Date(2024, 3, 1);
    oTime.AddTime(0, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 3, 1), oTime);
    EXPECT_FALSE(oTime.IsTimeValid());
    oTime = Date(2024, 3, 1);
    oTime.SubTime(0, 0, 0, 0, 0, 0, 9); // less than a tick
    EXPECT_EQ(Date(2024, 3, 1), oTime);
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, AnOverflowClearsTheValidFlag)
{
    CKorUTCTime oTime(1LL);
    oTime.SetHighResolutionLocaltime(LLONG_MAX);
    oTime.AddTime(0, 0, 0, 0, 0, 0, 10);
    EXPECT_EQ(LLONG_MIN, oTime.GetHighResolutionLocaltime());
    EXPECT_FALSE(oTime.IsTimeValid());

    CKorUTCTime oOther(1LL);
    oOther.SetHighResolutionLocaltime(LLONG_MIN);
    oOther.SubTime(0, 0, 0, 0, 0, 0, 10);
    EXPECT_EQ(LLONG_MAX, oOther.GetHighResolutionLocaltime());
    EXPECT_FALSE(oOther.IsTimeValid());
    oOther.AddTime(UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX);
}

TEST(KorUTCTime, AddTimeDoesNotMakeAnInvalidTimeValid)
{
    CKorUTCTime oTime;
    oTime.AddTime(1, 0, 0, 0, 0, 0, 0);
    EXPECT_FALSE(oTime.IsTimeValid());
    oTime.SubTime(0, 1, 0, 0, 0, 0, 0);
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, MovesBySpansInPlace)
{
    CKorUTCTime oTime = Date(2024, 3, 1);
    EXPECT_EQ(&oTime, &(oTime += CKorTimeDiff(0, 1, 0, 0, 0, 0, 10)));
    EXPECT_EQ(CKorUTCTime(1, 3, 2024, 1, 0, 0, 0, 0, 10), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(&oTime, &(oTime -= CKorTimeDiff(1, 1, 0, 0, 0, 0, 10)));
    EXPECT_EQ(Date(2024, 2, 29), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
    oTime += CKorTimeDiff(-1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 28), oTime);
    oTime -= CKorTimeDiff(-1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 29), oTime);
}

TEST(KorUTCTime, SpansOfMoreThan292YearsWrap)
{
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(1844674407370955162LL, true); // ten of these are 2^64 + 4
    CKorUTCTime oTime = At(100);
    oTime += oSpan;
    EXPECT_EQ(100, oTime.GetHighResolutionLocaltime());
    oSpan.SetTimeDiff(LLONG_MIN, true);
    oTime -= oSpan;
    EXPECT_EQ(100, oTime.GetHighResolutionLocaltime());
}

TEST(KorUTCTime, ASumOrDifferenceWithASpanIsNotValid)
{
    const CKorUTCTime oTime = Date(2024, 3, 1);
    const CKorUTCTime oSum = oTime + CKorTimeDiff(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 3, 2), oSum);
    EXPECT_FALSE(oSum.IsTimeValid());
    const CKorUTCTime oDifference = oTime - CKorTimeDiff(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 29), oDifference);
    EXPECT_FALSE(oDifference.IsTimeValid());
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, TheDifferenceFromAnEarlierTimeIsExact)
{
    const CKorTimeDiff oSpan = At(EPOCH + 12345678987654LL) - At(EPOCH);
    CKorTimeDiff oExpected;
    oExpected.SetTimeDiff(12345678987654LL, true);
    EXPECT_EQ(oExpected, oSpan);
    EXPECT_EQ(CKorTimeDiff(), At(EPOCH) - At(EPOCH));
}

TEST(KorUTCTime, TheDifferenceFromALaterTimeIsNotNegative)
{
    const CKorTimeDiff oSpan = Date(2024, 3, 1) - Date(2024, 3, 2);
    EXPECT_NE(CKorTimeDiff(-1, 0, 0, 0, 0, 0, 0), oSpan);
    // The whole milliseconds and microseconds of 2^64 ticks less one day, without the ticks of a
    // microsecond, which are zero in a difference of whole days.
    CKorTimeDiff oExpected;
    oExpected.SetTimeDiff(
        static_cast<long long>((0ULL - static_cast<std::uint64_t>(DAY)) / 100 * 100), true);
    EXPECT_EQ(oExpected, oSpan);

    // 2^64 - 1: 184467440737095 ms, 516 us and the remainder -1 as an unsigned count of 10 ns.
    EXPECT_EQ(CKorTimeDiff(184467440737095LL, 516, static_cast<unsigned>(-10)), At(0) - At(1));
}

TEST(KorUTCTime, ComparesInstantsWhateverTheValidFlags)
{
    const CKorUTCTime oEarly(1LL);
    const CKorUTCTime oLate = At(100001);
    EXPECT_TRUE(oEarly < oLate);
    EXPECT_FALSE(oLate < oEarly);
    EXPECT_TRUE(oLate > oEarly);
    EXPECT_TRUE(oEarly <= oLate);
    EXPECT_TRUE(oLate >= oEarly);
    EXPECT_TRUE(oEarly != oLate);
    EXPECT_FALSE(oEarly == oLate);
    EXPECT_TRUE(oEarly == At(100000));
    EXPECT_FALSE(oEarly < At(100000));
    EXPECT_TRUE(oEarly <= At(100000));
    EXPECT_TRUE(oEarly >= At(100000));
}

TEST(KorUTCTime, ComparesNegativeCountsLikeSpans)
{
    EXPECT_FALSE(At(-1) < At(1));
    EXPECT_TRUE(At(-1) > At(1));
    EXPECT_TRUE(At(-1) <= At(1));
    EXPECT_FALSE(At(-1) >= At(1));
}

} // namespace
