#include "time/KorIsoTime.h"

#include "tests/time/InstantSupport.h"
#include "tests/time/PythonPeer.h"
#include "time/KorLocalTime.h"
#include "time/KorTimeZone.h"

#include <gtest/gtest.h>
#include <limits>

namespace
{

constexpr int UNTOUCHED = 4711;
constexpr std::int64_t UNIX_5_MARCH = 1709647629; // 2024-03-05T14:07:09Z

const CKorUTCTime& Untouched()
{
    static const CKorUTCTime oTime = TimeOfTicks(-42);
    return oTime;
}

/// The text as it is read and written again, with all digits; "" when it is refused.
std::string Reread(const std::string& strText)
{
    CKorUTCTime oTime = Untouched();
    int nOffset = UNTOUCHED;
    if (!KorFromIsoString(strText, oTime, &nOffset)) {
        EXPECT_EQ(Untouched(), oTime) << strText;
        EXPECT_EQ(UNTOUCHED, nOffset) << strText;
        return "";
    }
    EXPECT_TRUE(oTime.IsTimeValid()) << strText;
    return KorToIsoString(oTime, nOffset, 9);
}

std::string InZone(const std::string& strText, const char* pszZone)
{
    CKorTimeZone oZone;
    EXPECT_TRUE(oZone.Load(pszZone));
    CKorUTCTime oTime = Untouched();
    int nOffset = UNTOUCHED;
    if (!KorFromIsoString(strText, oTime, oZone, &nOffset)) {
        EXPECT_EQ(Untouched(), oTime);
        EXPECT_EQ(UNTOUCHED, nOffset);
        return "";
    }
    return KorToIsoString(oTime, nOffset, 0);
}

TEST(KorIsoTime, WritesDateClockFractionAndOffset)
{
    const CKorUTCTime oTime = TimeOfUnix(UNIX_5_MARCH, 25012599);
    EXPECT_EQ("2024-03-05T14:07:09.250Z", KorToIsoString(oTime));
    EXPECT_EQ("2024-03-05T19:37:09.250+05:30", KorToIsoString(oTime, 330));
    EXPECT_EQ("2024-03-04T14:08:09.250-23:59", KorToIsoString(oTime, -1439));
    EXPECT_EQ("2024-03-06T14:06:09.250+23:59", KorToIsoString(oTime, 1439));
}

TEST(KorIsoTime, CutsTheFractionToTheDigitsAskedFor)
{
    const CKorUTCTime oTime = TimeOfUnix(UNIX_5_MARCH, 98765439);
    const char* const apszFractions[] = {"",          ".9",         ".98",       ".987",
                                         ".9876",     ".98765",     ".987654",   ".9876543",
                                         ".98765439", ".987654390", ".987654390"};
    for (unsigned nDigits = 0; nDigits < 11; ++nDigits)
        EXPECT_EQ("2024-03-05T14:07:09" + std::string(apszFractions[nDigits]) + "Z",
                  KorToIsoString(oTime, 0, nDigits));
    EXPECT_EQ("2024-03-05T14:07:09.987654390Z",
              KorToIsoString(oTime, 0, std::numeric_limits<unsigned>::max()));
}

TEST(KorIsoTime, WritesNothingForAYearOrAnOffsetOutOfRange)
{
    EXPECT_EQ("0000-01-01T00:00:00Z", KorToIsoString(TimeOfTicks(0), 0, 0));
    EXPECT_EQ("", KorToIsoString(TimeOfTicks(-1)));
    EXPECT_EQ("", KorToIsoString(TimeOfTicks(0), -1));
    EXPECT_EQ("0000-01-01T00:00:59.999999990+00:01", KorToIsoString(TimeOfTicks(-1), 1, 9));
    for (const int nOffset :
         {1440, -1440, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ("", KorToIsoString(TimeOfUnix(0), nOffset)) << nOffset;
}

TEST(KorIsoTime, WritesTheEndsOfTheRange)
{
    EXPECT_EQ("2922-10-08T21:52:48.547758070Z", // 9,223,372,036,854,775,807 ticks
              KorToIsoString(TimeOfTicks(std::numeric_limits<std::int64_t>::max()), 0, 9));
    EXPECT_EQ("2922-10-09T21:51:48.547758070+23:59",
              KorToIsoString(TimeOfTicks(std::numeric_limits<std::int64_t>::max()), 1439, 9));
    EXPECT_EQ("", KorToIsoString(TimeOfTicks(std::numeric_limits<std::int64_t>::min()), -1439));
}

TEST(KorIsoTime, WritesTheFirstOfJanuaryOf2000AsThatOf2000)
{
    EXPECT_EQ("2000-01-01T12:00:00.000Z",
              KorToIsoString(CKorUTCTime(1, 1, 2000, 12, 0, 0, 0, 0, 0)));
}

TEST(KorIsoTime, TakesALocalTimeByItsInstantAndAnInvalidOneToo)
{
    const CKorLocalTime oLocal(5, 3, 2024, 10, 0, 0, 0, 2);
    EXPECT_EQ("2024-03-05T08:00:00Z", KorToIsoString(oLocal, 0, 0));
    CKorUTCTime oInvalid;
    oInvalid.SetHighResolutionLocaltime(TicksOf(oLocal));
    ASSERT_FALSE(oInvalid.IsTimeValid());
    EXPECT_EQ("2024-03-05T08:00:00Z", KorToIsoString(oInvalid, 0, 0));
}

TEST(KorIsoTime, ReadsIntoALocalTimeItsInstant)
{
    CKorLocalTime oLocal(5, 3, 2020, 10, 0, 0, 0, 2);
    ASSERT_TRUE(KorFromIsoString("2024-03-05T14:07:09Z", oLocal));
    EXPECT_EQ(2, oLocal.GetTimezone());
    EXPECT_EQ(TicksOf(TimeOfUnix(UNIX_5_MARCH)), TicksOf(oLocal));
    EXPECT_EQ(16, oLocal.GetHour());
}

TEST(KorIsoTime, ReadsEveryKindOfDate)
{
    const std::string strMidnight = "2024-03-05T00:00:00.000000000Z";
    for (const char* pszText :
         {"2024-03-05", "2024-065", "2024-W10-2", "20240305", "2024065", "2024W102"})
        EXPECT_EQ(strMidnight, Reread(pszText)) << pszText;
}

TEST(KorIsoTime, ReadsEveryKindOfClock)
{
    const std::string strDate = "2024-03-05T";
    EXPECT_EQ(strDate + "14:07:00.000000000Z", Reread("2024-03-05T14:07"));
    EXPECT_EQ(strDate + "14:07:09.000000000Z", Reread("2024-03-05 14:07:09"));
    EXPECT_EQ(strDate + "14:07:09.200000000Z", Reread("2024-03-05T14:07:09.2"));
    EXPECT_EQ(strDate + "14:07:09.000000010Z", Reread("2024-03-05T14:07:09,000000019"));
    EXPECT_EQ(strDate + "14:07:09.999999990Z", Reread("2024-03-05T14:07:09.999999999"));
    EXPECT_EQ(strDate + "14:07:00.000000000Z", Reread("20240305T1407"));
    EXPECT_EQ(strDate + "14:07:09.250000000Z", Reread("2024065 140709.25"));
    EXPECT_EQ(strDate + "14:07:09.250000000Z", Reread("2024W102T140709,25Z"));
}

TEST(KorIsoTime, ReadsEveryKindOfOffset)
{
    const std::string strDate = "2024-03-05T14:07:00.000000000";
    EXPECT_EQ(strDate + "Z", Reread("2024-03-05T14:07Z"));
    EXPECT_EQ(strDate + "+05:00", Reread("2024-03-05T14:07+05"));
    EXPECT_EQ(strDate + "-05:30", Reread("2024-03-05T14:07-05:30"));
    EXPECT_EQ(strDate + "+05:30", Reread("2024-03-05T14:07+0530"));
    EXPECT_EQ(strDate + "-23:59", Reread("20240305T1407-23:59"));
    EXPECT_EQ(strDate + "+23:59", Reread("20240305T1407+2359"));
    EXPECT_EQ(strDate + "Z", Reread("2024-03-05T14:07-00:00"));
    EXPECT_EQ(strDate + "-00:30", Reread("2024-03-05T14:07-0030"));
}

TEST(KorIsoTime, SubtractsTheOffsetFromTheClock)
{
    CKorUTCTime oTime;
    ASSERT_TRUE(KorFromIsoString("2024-03-05T19:37:09.250+05:30", oTime));
    EXPECT_EQ(TimeOfUnix(UNIX_5_MARCH, 25000000), oTime);
}

TEST(KorIsoTime, TakesHour24ForTheMidnightThatFollows)
{
    EXPECT_EQ("2025-01-01T00:00:00.000000000Z", Reread("2024-12-31T24:00"));
    EXPECT_EQ("2024-03-01T00:00:00.000000000+01:00", Reread("20240229T240000.000+01"));
    for (const char* pszText :
         {"2024-12-31T24:01", "2024-12-31T24:00:01", "2024-12-31T24:00:00.00000001",
          "2024-12-31T24:00:60", "2024-12-31T25:00"})
        EXPECT_EQ("", Reread(pszText)) << pszText;
}

TEST(KorIsoTime, TakesSecond60ForTheNextSecondAtTheEndOfADayOfUtcOnly)
{
    EXPECT_EQ("2017-01-01T00:00:00.000000000Z", Reread("2016-12-31T23:59:60Z"));
    EXPECT_EQ("2017-01-01T00:00:00.500000000Z", Reread("20161231T235960.5"));
    EXPECT_EQ("2017-01-01T05:30:00.000000000+05:30", Reread("2017-01-01T05:29:60+05:30"));
    EXPECT_EQ("2016-12-31T16:00:00.000000000-08:00", Reread("2016-12-31T15:59:60-08"));
    for (const char* pszText : {"2016-12-31T23:58:60Z", "2016-12-31T22:59:60Z",
                                "2016-12-31T23:59:60+05:30", "2016-12-31T23:59:61Z"})
        EXPECT_EQ("", Reread(pszText)) << pszText;
}

TEST(KorIsoTime, KnowsTheLengthsOfMonthsYearsAndWeekYears)
{
    EXPECT_EQ("2024-02-29T00:00:00.000000000Z", Reread("2024-02-29"));
    EXPECT_EQ("2024-12-31T00:00:00.000000000Z", Reread("2024-366"));
    EXPECT_EQ("2021-01-03T00:00:00.000000000Z", Reread("2020-W53-7"));
    EXPECT_EQ("0000-01-03T00:00:00.000000000Z", Reread("0000-W01-1"));
    for (const char* pszText :
         {"2023-02-29", "2024-02-30", "2024-04-31", "2024-00-01", "2024-13-01", "2024-01-00",
          "2024-01-32", "2023-366", "2024-367", "2024-000", "2024-W53-1", "2024-W00-1",
          "2024-W10-0", "2024-W10-8", "1900-02-29", "20230229", "20240001", "20241301"})
        EXPECT_EQ("", Reread(pszText)) << pszText;
}

TEST(KorIsoTime, RefusesWhatIsNotExactlyATime)
{
    for (const char* pszText : {"",
                                " ",
                                "2",
                                "2024",
                                "2024-",
                                "2024-03",
                                "202403",
                                "2024-3-5",
                                "2024-03-5",
                                "24-03-05",
                                "12024-03-05",
                                "+2024-03-05",
                                "-2024-03-05",
                                "2024-0305",
                                "202403-05",
                                "2024-W102",
                                "2024W10-2",
                                "2024-W10",
                                "2024W10",
                                "2024w102",
                                "2024-0655",
                                "20240655",
                                "202406",
                                " 2024-03-05",
                                "2024-03-05 ",
                                "2024-03-05Z",
                                "2024-03-05T",
                                "2024-03-05t14:07",
                                "2024-03-05  14:07",
                                "2024-03-05\t14:07",
                                "2024-03-0514:07",
                                "2024-03-05T14",
                                "2024-03-05T14Z",
                                "2024-03-05T14:",
                                "2024-03-05T14:7",
                                "2024-03-05T1407",
                                "20240305T14:07",
                                "2024-03-05T14:0709",
                                "20240305T1407:09",
                                "20240305T140:709",
                                "2024-03-05T14:07:",
                                "2024-03-05T14:07:9",
                                "2024-03-05T14:07.5",
                                "20240305T1407.5",
                                "2024-03-05T14:07:09.",
                                "2024-03-05T14:07:09,Z",
                                "2024-03-05T14:07:09.1234567890",
                                "2024-03-05T14:60",
                                "2024-03-05T14:07:61",
                                "2024-03-05T14:07:09z",
                                "2024-03-05T14:07:09 Z",
                                "2024-03-05T14:07:09 +01",
                                "2024-03-05T14:07:09+",
                                "2024-03-05T14:07:09+1",
                                "2024-03-05T14:07:09+1:30",
                                "2024-03-05T14:07:09+01:",
                                "2024-03-05T14:07:09+01:3",
                                "2024-03-05T14:07:09+013",
                                "2024-03-05T14:07:09+24:00",
                                "2024-03-05T14:07:09+01:60",
                                "2024-03-05T14:07:09+01:30:00",
                                "2024-03-05T14:07:09+01300",
                                "2024-03-05T14:07:09ZZ",
                                "2024-03-05T14:07:09Z ",
                                "2024-03-05T14:07:09Z+01",
                                "2024-03-05T14:07:09 CET",
                                "2024-03-05T-1:07",
                                "2024-03-05T14:07:+9",
                                "2024_03_05",
                                "2024.03.05",
                                "2024/03/05",
                                "05.03.2024 14:07:09",
                                "2024-03-05T14:07:09\xE2\x88\x92"
                                "01:00"})
        EXPECT_EQ("", Reread(pszText)) << pszText;
    EXPECT_EQ("", Reread(std::string("2024-03-05\0", 11)));
    EXPECT_EQ("", Reread(std::string("2024-03-05T14:07\0Z", 18)));
}

TEST(KorIsoTime, RefusesWhatIsBeyondTheRangeOfTimes)
{
    EXPECT_EQ("2922-10-08T21:52:48.547758070Z", Reread("2922-10-08T21:52:48.547758079Z"));
    for (const char* pszText : {"2922-10-08T21:52:48.547758080Z", "2922-10-08T21:51:48.55-00:01",
                                "2922-10-09", "9999-12-31T23:59:59.999999999Z", "9999365"})
        EXPECT_EQ("", Reread(pszText)) << pszText;
    CKorUTCTime oTime;
    ASSERT_TRUE(KorFromIsoString("0000-01-01T00:00+23:59", oTime));
    EXPECT_EQ(-1439 * 60 * TICKS_PER_SECOND, TicksOf(oTime));
}

TEST(KorIsoTime, ReadsATextWithoutAnOffsetInAZone)
{
    EXPECT_EQ("2024-01-05T14:07:09+01:00", InZone("2024-01-05T14:07:09", "Europe/Berlin"));
    EXPECT_EQ("2024-07-05T14:07:09+02:00", InZone("2024-07-05T14:07:09", "Europe/Berlin"));
    EXPECT_EQ("2024-07-05T00:00:00+05:30", InZone("2024-07-05", "Asia/Kolkata"));
    EXPECT_EQ("2024-07-06T00:00:00+05:30", InZone("2024-07-05T24:00", "Asia/Kolkata"));
    EXPECT_EQ("2024-10-27T02:30:00+02:00", InZone("2024-10-27T02:30", "Europe/Berlin"));
    EXPECT_EQ("", InZone("2922-12-31T02:30", "Europe/Berlin"));
    EXPECT_EQ("", InZone("2024-13-31T02:30", "Europe/Berlin"));
}

TEST(KorIsoTime, LeavesATextWithAnOffsetToItsOffset)
{
    EXPECT_EQ("2024-01-05T14:07:09-03:00", InZone("2024-01-05T14:07:09-03", "Europe/Berlin"));
    EXPECT_EQ("2024-01-05T14:07:09Z", InZone("2024-01-05T14:07:09Z", "Europe/Berlin"));
}

TEST(KorIsoTime, TakesSecond60InAZoneAtTheEndOfADayOfUtcOnly)
{
    EXPECT_EQ("2017-01-01T01:00:00+01:00", InZone("2017-01-01T00:59:60", "Europe/Berlin"));
    EXPECT_EQ("", InZone("2016-12-31T23:59:60", "Europe/Berlin"));
}

TEST(KorIsoTime, RoundsTheSecondsOfAZonesOffsetDown)
{
    EXPECT_EQ("1880-01-01T00:00:32+00:53", InZone("1880-01-01T00:01:00", "Europe/Berlin")); // 53:28
    EXPECT_EQ("1879-12-31T23:59:02-04:57", InZone("1880-01-01", "America/New_York")); // 4:56:02
}

TEST(KorIsoTime, ReadsBackWhatItWrote)
{
    RandomTicks oRandom;
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t nTicks = oRandom.Next(0, std::numeric_limits<std::int64_t>::max());
        const int nOffset = static_cast<int>(oRandom.Next(-1439, 1439));
        const std::string strText = KorToIsoString(TimeOfTicks(nTicks), nOffset, 8);
        CKorUTCTime oTime;
        int nRead = UNTOUCHED;
        if (strText.empty())
            continue;
        ASSERT_TRUE(KorFromIsoString(strText, oTime, &nRead)) << strText;
        ASSERT_EQ(nTicks, TicksOf(oTime)) << strText;
        ASSERT_EQ(nOffset, nRead) << strText;
    }
}

} // namespace
