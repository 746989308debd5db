#include "time/KorUTCTime.h"
#include "tests/time/UTCTimeTest.h"

#include <climits>
#include <gtest/gtest.h>
#include <sys/time.h>

namespace
{

TEST(KorUTCTime, HasItsNumbers)
{
    EXPECT_EQ(1, CKorUTCTime::ePartYear);
    EXPECT_EQ(2, CKorUTCTime::ePartMonth);
    EXPECT_EQ(3, CKorUTCTime::ePartDay);
    EXPECT_EQ(4, CKorUTCTime::ePartHour);
    EXPECT_EQ(5, CKorUTCTime::ePartMinute);
    EXPECT_EQ(6, CKorUTCTime::ePartSecond);
    EXPECT_EQ(0, CKorUTCTime::eTuesday);
    EXPECT_EQ(1, CKorUTCTime::eWednesday);
    EXPECT_EQ(2, CKorUTCTime::eThursday);
    EXPECT_EQ(3, CKorUTCTime::eFriday);
    EXPECT_EQ(4, CKorUTCTime::eSaturday);
    EXPECT_EQ(5, CKorUTCTime::eSunday);
    EXPECT_EQ(6, CKorUTCTime::eMonday);
}

TEST(KorUTCTime, IsTheInvalidYearZeroAtFirst)
{
    const CKorUTCTime oTime;
    EXPECT_EQ(YearMonthDay(0, 1, 1), DateOf(oTime));
    EXPECT_EQ(0, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(0, oTime.GetHour());
    EXPECT_EQ(0, oTime.GetMinute());
    EXPECT_EQ(0, oTime.GetSecond());
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_TRUE(oTime.IsClassValid());
}

TEST(KorUTCTime, IsValidWhenMadeOfMilliseconds)
{
    const CKorUTCTime oTime(86400001LL);
    EXPECT_EQ(DAY + 100000, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(86400001, oTime.GetLocaltime());
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, IsMadeOfParts)
{
    const CKorUTCTime oTime(5, 3, 2024, 14, 7, 9, 250, 125, 999);
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(5, oTime.GetDay());
    EXPECT_EQ(3, oTime.GetMonth());
    EXPECT_EQ(2024, oTime.GetYear());
    EXPECT_EQ(14, oTime.GetHour());
    EXPECT_EQ(7, oTime.GetMinute());
    EXPECT_EQ(9, oTime.GetSecond());
    EXPECT_EQ(250, oTime.GetMilliSecond());
    EXPECT_EQ(125, oTime.GetMicroSecond());
    EXPECT_EQ(2024 * 12 + 3, oTime.GetTotalMonths());
    EXPECT_EQ(CKorUTCTime::eTuesday, oTime.GetWeekDay());
    EXPECT_EQ(oTime.GetLocaltime(), oTime.GetTotalMilliseconds());
    EXPECT_EQ(oTime.GetHighResolutionLocaltime() / 100, oTime.GetTotalMicroseconds());
}

TEST(KorUTCTime, CutsNanosecondsToWholeTens)
{
    EXPECT_EQ(990, CKorUTCTime(1, 1, 2024, 0, 0, 0, 0, 0, 999).GetNanoSecond());
}

TEST(KorUTCTime, ClampsTheDayToItsMonth)
{
    const CKorUTCTime oTime = Date(2023, 2, 31);
    EXPECT_EQ(YearMonthDay(2023, 2, 28), DateOf(oTime));
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ(YearMonthDay(2023, 2, 28), DateOf(Date(2023, 2, UINT_MAX)));
}

TEST(KorUTCTime, AcceptsTheLeapDay)
{
    const CKorUTCTime oTime = Date(2024, 2, 29);
    EXPECT_EQ(YearMonthDay(2024, 2, 29), DateOf(oTime));
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, ClampsDayZeroToTheFirst)
{
    const CKorUTCTime oTime = Date(2020, 1, 0);
    EXPECT_EQ(YearMonthDay(2020, 1, 1), DateOf(oTime));
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, ClampsTheHour)
{
    const CKorUTCTime oTime = Date(2020, 1, 2, 24);
    EXPECT_EQ(YearMonthDay(2020, 1, 2), DateOf(oTime));
    EXPECT_EQ(23, oTime.GetHour());
    EXPECT_EQ(0, oTime.GetMinute());
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, ClampsEveryClockPart)
{
    const CKorUTCTime oLast(31, 12, 2023, 23, 59, 59, 999, 999, 999);
    EXPECT_TRUE(oLast.IsTimeValid());
    for (unsigned nPart = 0; nPart < 6; ++nPart) {
        unsigned anParts[] = {23, 59, 59, 999, 999, 999};
        for (const unsigned nBad : {anParts[nPart] + 1, UINT_MAX}) {
            anParts[nPart] = nBad;
            const CKorUTCTime oTime(31, 12, 2023, anParts[0], anParts[1], anParts[2], anParts[3],
                                    anParts[4], anParts[5]);
            EXPECT_EQ(oLast, oTime) << nPart << ' ' << nBad;
            EXPECT_FALSE(oTime.IsTimeValid()) << nPart << ' ' << nBad;
        }
    }
}

TEST(KorUTCTime, ClampsTheMonth)
{
    for (const unsigned nMonth : {0U, 13U, 14U, UINT_MAX, 0x80000000U}) {
        const CKorUTCTime oTime = Date(2023, nMonth, 31);
        EXPECT_EQ(YearMonthDay(2023, nMonth == 0 ? 1 : 12, 31), DateOf(oTime)) << nMonth;
        EXPECT_FALSE(oTime.IsTimeValid()) << nMonth;
    }
}

TEST(KorUTCTime, AValidDateMakesAnInvalidTimeValidAgain)
{
    CKorUTCTime oTime = Date(2023, 13, 1);
    oTime.SetDate(1, 12, 2023, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, HasEveryClockFieldAtItsLimits)
{
    const CKorUTCTime oTime = At(719528 * DAY - 1);
    EXPECT_EQ(23, oTime.GetHour());
    EXPECT_EQ(59, oTime.GetMinute());
    EXPECT_EQ(59, oTime.GetSecond());
    EXPECT_EQ(999, oTime.GetMilliSecond());
    EXPECT_EQ(999, oTime.GetMicroSecond());
    EXPECT_EQ(990, oTime.GetNanoSecond());
}

TEST(KorUTCTime, ReadsANegativeCountAsAnUnsignedOne)
{
    const CKorUTCTime oTime = At(-1);
    EXPECT_EQ(184467440737095LL, oTime.GetLocaltime());
    EXPECT_EQ(-1, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(184467440737095516LL, oTime.GetTotalMicroseconds());
    EXPECT_EQ(516, oTime.GetMicroSecond());
    EXPECT_EQ(150, oTime.GetNanoSecond());
    EXPECT_EQ(5845, oTime.GetYear());
}

TEST(KorUTCTime, RawSettersKeepTheValidFlag)
{
    CKorUTCTime oInvalid;
    oInvalid.SetLocaltime(1);
    EXPECT_EQ(100000, oInvalid.GetHighResolutionLocaltime());
    EXPECT_FALSE(oInvalid.IsTimeValid());
    CKorUTCTime oValid(1LL);
    oValid.SetHighResolutionLocaltime(7);
    EXPECT_EQ(7, oValid.GetHighResolutionLocaltime());
    EXPECT_TRUE(oValid.IsTimeValid());
}

TEST(KorUTCTime, AssigningSecondsMovesTheEpochByTenMicrosecondsEach)
{
    CKorUTCTime oTime;
    const CKorUTCTime& oResult = oTime = 10L;
    EXPECT_EQ(&oTime, &oResult);
    EXPECT_EQ(EPOCH + 10000, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(YearMonthDay(1970, 1, 1), DateOf(oTime));
    EXPECT_EQ(0, oTime.GetMilliSecond());
    EXPECT_EQ(100, oTime.GetMicroSecond());
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, AssigningSecondsWrapsTo32Bits)
{
    CKorUTCTime oTime;
    oTime = 2147484L; // 2,147,484,000 wraps
    EXPECT_EQ(EPOCH + 2147484000LL - 4294967296LL, oTime.GetHighResolutionLocaltime());
    oTime = -1L;
    EXPECT_EQ(EPOCH - 1000, oTime.GetHighResolutionLocaltime());
    oTime = 1700000000L;
    EXPECT_EQ(EPOCH - 807049216LL, oTime.GetHighResolutionLocaltime());
    oTime = LONG_MIN;
    EXPECT_EQ(EPOCH, oTime.GetHighResolutionLocaltime());
    oTime = LONG_MAX;
    EXPECT_EQ(EPOCH - 1000, oTime.GetHighResolutionLocaltime());
}

TEST(KorUTCTime, CutsOffParts)
{
    const CKorUTCTime oFull(5, 3, 2024, 14, 7, 9, 250, 125, 990);
    const struct
    {
        int nPart;
        CKorUTCTime oExpected;
    } aoCases[] = {
        {1, Date(2024, 1, 1)},
        {2, Date(2024, 3, 1)},
        {3, Date(2024, 3, 5)},
        {4, CKorUTCTime(5, 3, 2024, 14, 0, 0, 0, 0, 0)},
        {5, CKorUTCTime(5, 3, 2024, 14, 7, 0, 0, 0, 0)},
        {6, CKorUTCTime(5, 3, 2024, 14, 7, 9, 0, 0, 0)},
        {0, oFull},
        {7, oFull},
        {-1, oFull},
        {INT_MAX, oFull},
    };
    for (const auto& oCase : aoCases) {
        CKorUTCTime oTime = oFull;
        oTime.CutOffParts(static_cast<CKorUTCTime::ETimePart>(oCase.nPart));
        EXPECT_EQ(oCase.oExpected, oTime) << oCase.nPart;
        EXPECT_TRUE(oTime.IsTimeValid()) << oCase.nPart;
    }
}

TEST(KorUTCTime, CuttingKeepsTheInvalidFlag)
{
    CKorUTCTime oTime = At(DAY + 1);
    oTime.CutOffParts(CKorUTCTime::ePartDay);
    EXPECT_EQ(DAY, oTime.GetHighResolutionLocaltime());
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, GivesUnixSecondsAndMicroseconds)
{
    const timeval oTime = CKorUTCTime(2, 1, 1970, 0, 0, 1, 2, 3, 40).GetTimeval();
    EXPECT_EQ(86401, oTime.tv_sec);
    EXPECT_EQ(2003, oTime.tv_usec);
    const timeval oEpoch = Date(1970, 1, 1).GetTimeval();
    EXPECT_EQ(0, oEpoch.tv_sec);
    EXPECT_EQ(0, oEpoch.tv_usec);
}

TEST(KorUTCTime, CurrentTimeIsTheSystemClocksAndNotValid)
{
    timeval oBefore;
    timeval oAfter;
    gettimeofday(&oBefore, nullptr);
    const CKorUTCTime oNow = CKorUTCTime::CurrentTime();
    gettimeofday(&oAfter, nullptr);
    EXPECT_FALSE(oNow.IsTimeValid());
    const auto Ticks = [](const timeval& oTime) {
        return EPOCH + oTime.tv_sec * SECOND + oTime.tv_usec * 100LL;
    };
    EXPECT_LE(Ticks(oBefore), oNow.GetHighResolutionLocaltime());
    EXPECT_GE(Ticks(oAfter), oNow.GetHighResolutionLocaltime());
}

TEST(KorUTCTime, CopiesInstantAndValidFlag)
{
    const CKorUTCTime oValid(5LL);
    CKorUTCTime oCopy(oValid);
    EXPECT_EQ(oValid, oCopy);
    EXPECT_TRUE(oCopy.IsTimeValid());
    oCopy = At(7);
    EXPECT_EQ(At(7), oCopy);
    EXPECT_FALSE(oCopy.IsTimeValid());
}

/// A clock one hour ahead of UTC.
class Ahead : public CKorUTCTime
{
public:
    long long GetLocaltime() const override { return CKorUTCTime::GetLocaltime() + 3600000; }
    long long GetHighResolutionLocaltime() const override
    {
        return CKorUTCTime::GetHighResolutionLocaltime() + HOUR;
    }
    void SetHighResolutionLocaltime(long long nTicks) override
    {
        CKorUTCTime::SetHighResolutionLocaltime(nTicks - HOUR);
    }
};

TEST(KorUTCTime, EveryQueryReadsTheClockOfADerivedClass)
{
    Ahead oTime;
    oTime.SetDate(6, 3, 2024, 0, 30, 0, 0, 0, 0);
    const CKorUTCTime& oBase = oTime;
    EXPECT_EQ(YearMonthDay(2024, 3, 6), DateOf(oBase));
    EXPECT_EQ(0, oBase.GetHour());
    EXPECT_EQ(30, oBase.GetMinute());
    EXPECT_EQ(CKorUTCTime::eWednesday, oBase.GetWeekDay());
    EXPECT_EQ(Date(2024, 3, 6) + CKorTimeDiff(0, 0, 30, 0, 0, 0, 0),
              oBase + CKorTimeDiff(0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 23, 30, 0, 0, 0, 0), oBase); // the instant itself
    oTime.CutOffParts(CKorUTCTime::ePartMonth);
    EXPECT_EQ(YearMonthDay(2024, 3, 1), DateOf(oBase));
    oTime += CKorTimeDiff(0, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(1, oTime.GetHour());
    oTime.AddTime(0, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(2, oTime.GetHour());
    EXPECT_EQ(CKorTimeDiff(0, 2, 0, 0, 0, 0, 0), oTime - Date(2024, 3, 1));
}

TEST(KorUTCTime, ADateBeyondTheLastTickIsAnotherValidOne)
{
    const CKorUTCTime oLast(15, 7, 5845, 23, 59, 59, 0, 0, 0);
    EXPECT_EQ("15.07.5845 23:59:59", oLast.Time2Str(CKorUTCTime::eDateTime));
    const CKorUTCTime oBeyond(17, 7, 5845, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(oBeyond.IsTimeValid());
    EXPECT_EQ(0, oBeyond.GetYear());
}

TEST(KorUTCTime, ComparisonsDisagreeAcrossOctoberOf2922)
{
    const CKorUTCTime oBefore(7, 10, 2922, 0, 0, 0, 0, 0, 0);
    const CKorUTCTime oAfter(9, 10, 2922, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(oBefore < oAfter);
    EXPECT_TRUE(oAfter <= oBefore);
    EXPECT_TRUE(oAfter < CKorUTCTime(10, 10, 2922, 0, 0, 0, 0, 0, 0));
    EXPECT_TRUE(oAfter <= CKorUTCTime(10, 10, 2922, 0, 0, 0, 0, 0, 0));
}

} // namespace
