#include "time/KorTimeDiff.h"

#include <climits>
#include <cstdint>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

CKorTimeDiff TicksSpan(long long nTicks)
{
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(nTicks, true);
    return oSpan;
}

long long Ticks(const CKorTimeDiff& oSpan)
{
    struct Open : CKorTimeDiff
    {
        explicit Open(const CKorTimeDiff& oOther) : CKorTimeDiff(oOther) {}
        long long Value() const { return m_nValue; }
    };
    return Open(oSpan).Value();
}

constexpr long long HOUR = 360000000000LL;
constexpr long long DAY = 24 * HOUR;

static_assert(!std::is_polymorphic_v<CKorTimeDiff>);
static_assert(sizeof(CKorTimeDiff) == 8);

TEST(KorTimeDiff, IsEmptyAtFirst)
{
    EXPECT_EQ(0, Ticks(CKorTimeDiff()));
}

TEST(KorTimeDiff, HasTheDocumentedPartNumbers)
{
    EXPECT_EQ(0, CKorTimeDiff::eDiffDays);
    EXPECT_EQ(1, CKorTimeDiff::eDiffHours);
    EXPECT_EQ(2, CKorTimeDiff::eDiffMinutes);
    EXPECT_EQ(3, CKorTimeDiff::eDiffSeconds);
}

TEST(KorTimeDiff, TakesMilliseconds)
{
    const CKorTimeDiff oSpan(1500LL);
    EXPECT_EQ(150000000, Ticks(oSpan));
    EXPECT_EQ(1, oSpan.GetTotalSeconds());
    EXPECT_EQ(1500, oSpan.GetTotalMilliSeconds());
}

TEST(KorTimeDiff, CutsNanosecondsToWholeTicks)
{
    EXPECT_EQ(0, Ticks(CKorTimeDiff(0, 0, 5)));
    EXPECT_EQ(1, Ticks(CKorTimeDiff(0, 0, 15)));
    EXPECT_EQ(429496729, Ticks(CKorTimeDiff(0, 0, UINT_MAX)));
}

TEST(KorTimeDiff, AddsMillisecondsMicrosecondsAndNanoseconds)
{
    EXPECT_EQ(200304, Ticks(CKorTimeDiff(2, 3, 40)));
    EXPECT_EQ(-100000 + 100, Ticks(CKorTimeDiff(-1, 1, 0)));
    EXPECT_EQ(429496729500LL, Ticks(CKorTimeDiff(0, UINT_MAX, 0)));
}

TEST(KorTimeDiff, SetTimeDiffTakesTicksOrMilliseconds)
{
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(-7, true);
    EXPECT_EQ(-7, Ticks(oSpan));
    oSpan.SetTimeDiff(-7, false);
    EXPECT_EQ(-700000, Ticks(oSpan));
    oSpan.SetTimeDiff(LLONG_MIN, true);
    EXPECT_EQ(LLONG_MIN, Ticks(oSpan));
    oSpan.SetTimeDiff(LLONG_MAX, false);
    EXPECT_EQ(-100000, Ticks(oSpan));
}

TEST(KorTimeDiff, SetTimeTakesPartsBeyondTheirUnit)
{
    EXPECT_EQ(CKorTimeDiff(1, 0, 0, 0, 0, 0, 0), CKorTimeDiff(0, 24, 0, 0, 0, 0, 0));
    EXPECT_EQ(DAY, Ticks(CKorTimeDiff(1, 0, 0, 0, 0, 0, 0)));
}

TEST(KorTimeDiff, SetTimeTakesNegativeParts)
{
    CKorTimeDiff oSpan;
    oSpan.SetTime(0, 0, 0, -1, 0, 0, 0);
    EXPECT_EQ(-100000000, Ticks(oSpan));
    oSpan.SetTime(0, 0, 1, -1, 0, 0, 0);
    EXPECT_EQ(5900000000LL, Ticks(oSpan));
}

TEST(KorTimeDiff, SetTimeCutsNanosecondsTowardZero)
{
    EXPECT_EQ(-1, Ticks(CKorTimeDiff(0, 0, 0, 0, 0, 0, -19)));
    EXPECT_EQ(1, Ticks(CKorTimeDiff(0, 0, 0, 0, 0, 0, 19)));
}

TEST(KorTimeDiff, SetTimeAddsEveryPart)
{
    EXPECT_EQ(DAY + 2 * HOUR + 3 * 6000000000LL + 400000000 + 500000 + 600 + 7,
              Ticks(CKorTimeDiff(1, 2, 3, 4, 5, 6, 70)));
}

TEST(KorTimeDiff, SetTimeWraps)
{
    EXPECT_EQ(static_cast<long long>(static_cast<std::uint64_t>(INT_MIN) * 8640000000000ULL),
              Ticks(CKorTimeDiff(INT_MIN, 0, 0, 0, 0, 0, 0)));
    const CKorTimeDiff oAll(INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX);
    EXPECT_EQ(static_cast<long long>(2147483647ULL * 9006100100100ULL + 214748364ULL), Ticks(oAll));
}

TEST(KorTimeDiff, ReportsTotals)
{
    const CKorTimeDiff oSpan(2, 3, 4, 5, 6, 7, 80);
    EXPECT_EQ(2, oSpan.GetTotalDays());
    EXPECT_EQ(51, oSpan.GetTotalHours());
    EXPECT_EQ(3064, oSpan.GetTotalMinutes());
    EXPECT_EQ(183845, oSpan.GetTotalSeconds());
    EXPECT_EQ(183845006, oSpan.GetTotalMilliSeconds());
    EXPECT_EQ(183845006007LL, oSpan.GetTotalMicroSeconds());
    EXPECT_EQ(183845006007080LL, oSpan.GetTotalNanoSeconds());
}

TEST(KorTimeDiff, TotalsOfANegativeSpanAreUnsignedQuotients)
{
    const CKorTimeDiff oSpan = TicksSpan(-1);
    EXPECT_EQ(2135039, oSpan.GetTotalDays());
    EXPECT_EQ(51240955, oSpan.GetTotalHours());
    EXPECT_EQ(3074457345LL, oSpan.GetTotalMinutes());
    EXPECT_EQ(184467440737LL, oSpan.GetTotalSeconds());
    EXPECT_EQ(184467440737095LL, oSpan.GetTotalMilliSeconds());
    EXPECT_EQ(184467440737095516LL, oSpan.GetTotalMicroSeconds());
    EXPECT_EQ(-10, oSpan.GetTotalNanoSeconds());
}

TEST(KorTimeDiff, NanosecondsWrapBeyond292Years)
{
    EXPECT_EQ(9223372036854775800LL, TicksSpan(922337203685477580LL).GetTotalNanoSeconds());
    EXPECT_EQ(-9223372036854775806LL, TicksSpan(922337203685477581LL).GetTotalNanoSeconds());
}

TEST(KorTimeDiff, GivesSecondsAndMicroseconds)
{
    const timeval oTime = CKorTimeDiff(2500LL).GetTimeval();
    EXPECT_EQ(2, oTime.tv_sec);
    EXPECT_EQ(500000, oTime.tv_usec);
}

TEST(KorTimeDiff, AddsAndSubtracts)
{
    CKorTimeDiff oSpan = TicksSpan(5) + TicksSpan(-8);
    EXPECT_EQ(-3, Ticks(oSpan));
    EXPECT_EQ(13, Ticks(TicksSpan(5) - TicksSpan(-8)));
    EXPECT_EQ(&oSpan, &(oSpan += TicksSpan(10)));
    EXPECT_EQ(7, Ticks(oSpan));
    EXPECT_EQ(&oSpan, &(oSpan -= TicksSpan(9)));
    EXPECT_EQ(-2, Ticks(oSpan));
}

TEST(KorTimeDiff, SumsAndDifferencesWrap)
{
    EXPECT_EQ(LLONG_MIN, Ticks(TicksSpan(LLONG_MAX) + TicksSpan(1)));
    EXPECT_EQ(LLONG_MAX, Ticks(TicksSpan(LLONG_MIN) - TicksSpan(1)));
}

TEST(KorTimeDiff, Multiplies)
{
    CKorTimeDiff oSpan = TicksSpan(-3);
    EXPECT_EQ(-12, Ticks(oSpan * 4));
    EXPECT_EQ(-12, Ticks(4ULL * oSpan));
    EXPECT_EQ(&oSpan, &(oSpan *= 5));
    EXPECT_EQ(-15, Ticks(oSpan));
    EXPECT_EQ(0, Ticks(TicksSpan(1LL << 62) * 4));
}

TEST(KorTimeDiff, DividesUnsigned)
{
    CKorTimeDiff oSpan = TicksSpan(17);
    EXPECT_EQ(4, Ticks(oSpan / 4));
    EXPECT_EQ(&oSpan, &(oSpan /= 5));
    EXPECT_EQ(3, Ticks(oSpan));
    EXPECT_EQ(LLONG_MAX, Ticks(TicksSpan(-1) / 2));
}

TEST(KorTimeDiff, ADivisionByZeroKeepsTheValue)
{
    CKorTimeDiff oSpan = TicksSpan(-17);
    EXPECT_EQ(-17, Ticks(oSpan / 0));
    EXPECT_EQ(&oSpan, &(oSpan /= 0));
    EXPECT_EQ(-17, Ticks(oSpan));
}

TEST(KorTimeDiff, AssignsAlsoToAConstantSpan)
{
    const CKorTimeDiff oSpan(1LL);
    const CKorTimeDiff& oResult = oSpan = CKorTimeDiff(2LL);
    EXPECT_EQ(&oSpan, &oResult);
    EXPECT_EQ(2, oSpan.GetTotalMilliSeconds());
}

TEST(KorTimeDiff, ComparesANegativeAndAPositiveSpanInTwoWays)
{
    const CKorTimeDiff oA = TicksSpan(-1);
    const CKorTimeDiff oB = TicksSpan(1);
    EXPECT_FALSE(oA < oB);
    EXPECT_TRUE(oA > oB);
    EXPECT_TRUE(oA <= oB);
    EXPECT_FALSE(oA >= oB);
    EXPECT_TRUE(oB < oA);
    EXPECT_TRUE(oB >= oA);
    EXPECT_FALSE(oA == oB);
    EXPECT_TRUE(oA != oB);
}

TEST(KorTimeDiff, ComparisonsAreUnsignedAndSignedOver64Bits)
{
    const long long anValues[] = {
        LLONG_MIN,  LLONG_MIN + 1, -(1LL << 32), -(1LL << 32) - 1, -(1LL << 31),  -1,       0, 1,
        0x7FFFFFFF, 0x80000000LL,  1LL << 32,    (1LL << 32) + 1,  LLONG_MAX - 1, LLONG_MAX};
    for (const long long nLeft : anValues) {
        for (const long long nRight : anValues) {
            const CKorTimeDiff oLeft = TicksSpan(nLeft);
            const CKorTimeDiff oRight = TicksSpan(nRight);
            const auto nUnsignedLeft = static_cast<unsigned long long>(nLeft);
            const auto nUnsignedRight = static_cast<unsigned long long>(nRight);
            EXPECT_EQ(nUnsignedLeft < nUnsignedRight, oLeft < oRight) << nLeft << ' ' << nRight;
            EXPECT_EQ(nUnsignedLeft > nUnsignedRight, oLeft > oRight) << nLeft << ' ' << nRight;
            EXPECT_EQ(nLeft <= nRight, oLeft <= oRight) << nLeft << ' ' << nRight;
            EXPECT_EQ(nLeft >= nRight, oLeft >= oRight) << nLeft << ' ' << nRight;
            EXPECT_EQ(nLeft == nRight, oLeft == oRight) << nLeft << ' ' << nRight;
            EXPECT_EQ(nLeft != nRight, oLeft != oRight) << nLeft << ' ' << nRight;
        }
    }
}

TEST(KorTimeDiff, ComparesOnSeveralThreadsAtOnce)
{
    std::vector<std::thread> vecThreads;
    std::vector<int> vecWrong(4, 0);
    for (size_t i = 0; i < vecWrong.size(); ++i) {
        vecThreads.emplace_back([&vecWrong, i] {
            const CKorTimeDiff oShort = TicksSpan(static_cast<long long>(i));
            const CKorTimeDiff oLong = TicksSpan(static_cast<long long>(i + 1) << 32);
            for (int n = 0; n < 1000; ++n) {
                const CKorTimeDiff& oLeft = n % 2 == 0 ? oShort : oLong;
                const CKorTimeDiff& oRight = n % 2 == 0 ? oLong : oShort;
                if ((oLeft < oRight) != (n % 2 == 0) || (oLeft > oRight) == (n % 2 == 0))
                    ++vecWrong[i];
            }
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(std::vector<int>(4, 0), vecWrong);
}

TEST(KorTimeDiff, CutsOffParts)
{
    CKorTimeDiff oSpan(0, 1, 2, 3, 500, 0, 0);
    oSpan.CutOffParts(CKorTimeDiff::eDiffMinutes);
    EXPECT_EQ(CKorTimeDiff(0, 1, 2, 0, 0, 0, 0), oSpan);

    const CKorTimeDiff oFull(1, 2, 3, 4, 5, 6, 70);
    oSpan = oFull;
    oSpan.CutOffParts(CKorTimeDiff::eDiffSeconds);
    EXPECT_EQ(CKorTimeDiff(1, 2, 3, 4, 0, 0, 0), oSpan);
    oSpan.CutOffParts(CKorTimeDiff::eDiffHours);
    EXPECT_EQ(CKorTimeDiff(1, 2, 0, 0, 0, 0, 0), oSpan);
    oSpan.CutOffParts(CKorTimeDiff::eDiffDays);
    EXPECT_EQ(CKorTimeDiff(1, 0, 0, 0, 0, 0, 0), oSpan);
}

TEST(KorTimeDiff, CutsNothingOffForAnUnknownPart)
{
    const CKorTimeDiff oFull(1, 2, 3, 4, 5, 6, 70);
    for (const int nPart : {4, 5, -1, INT_MAX, INT_MIN}) {
        CKorTimeDiff oSpan(oFull);
        oSpan.CutOffParts(static_cast<CKorTimeDiff::ETimeDiffPart>(nPart));
        EXPECT_EQ(oFull, oSpan) << nPart;
    }
}

TEST(KorTimeDiff, CutsANegativeSpanUnsigned)
{
    CKorTimeDiff oSpan = TicksSpan(-1);
    oSpan.CutOffParts(CKorTimeDiff::eDiffDays);
    EXPECT_EQ(static_cast<long long>(2135039ULL * 8640000000000ULL), Ticks(oSpan));
}

} // namespace
