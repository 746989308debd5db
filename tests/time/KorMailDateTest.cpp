#include "time/KorMailDate.h"

#include "tests/time/InstantSupport.h"
#include "tests/time/PythonPeer.h"
#include "time/KorIsoTime.h"
#include "time/KorLocalTime.h"

#include <gtest/gtest.h>
#include <limits>

namespace
{

constexpr int UNTOUCHED = 4711;
constexpr std::int64_t UNIX_5_MARCH = 1709647629; // Tue, 2024-03-05T14:07:09Z

/// The text as it is read and written in ISO; "" when it is refused.
std::string Read(const std::string& strText)
{
    const CKorUTCTime oUntouched = TimeOfTicks(-42);
    CKorUTCTime oTime = oUntouched;
    int nOffset = UNTOUCHED;
    if (!KorFromMailDate(strText, oTime, &nOffset)) {
        EXPECT_EQ(oUntouched, oTime) << strText;
        EXPECT_EQ(UNTOUCHED, nOffset) << strText;
        return "";
    }
    EXPECT_TRUE(oTime.IsTimeValid()) << strText;
    return KorToIsoString(oTime, nOffset, 0);
}

TEST(KorMailDate, WritesWeekdayDateClockAndOffset)
{
    const CKorUTCTime oTime = TimeOfUnix(UNIX_5_MARCH, 99999999);
    EXPECT_EQ("Tue, 05 Mar 2024 14:07:09 +0000", KorToMailDate(oTime));
    EXPECT_EQ("Tue, 05 Mar 2024 19:37:09 +0530", KorToMailDate(oTime, 330));
    EXPECT_EQ("Mon, 04 Mar 2024 14:08:09 -2359", KorToMailDate(oTime, -1439));
    EXPECT_EQ("Sat, 09 Mar 2024 18:06:09 +9959", KorToMailDate(oTime, 5999));
}

TEST(KorMailDate, WritesNothingForAYearOrAnOffsetOutOfRange)
{
    EXPECT_EQ("Sat, 01 Jan 0000 00:00:00 +0000", KorToMailDate(TimeOfTicks(0)));
    EXPECT_EQ("", KorToMailDate(TimeOfTicks(-1)));
    EXPECT_EQ("Thu, 08 Oct 2922 21:52:48 +0000",
              KorToMailDate(TimeOfTicks(std::numeric_limits<std::int64_t>::max())));
    for (const int nOffset :
         {6000, -6000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ("", KorToMailDate(TimeOfUnix(0), nOffset)) << nOffset;
}

TEST(KorMailDate, TakesALocalTimeByItsInstantAndTheFirstOfJanuaryOf2000AsSuch)
{
    EXPECT_EQ("Tue, 05 Mar 2024 08:00:00 +0000",
              KorToMailDate(CKorLocalTime(5, 3, 2024, 10, 0, 0, 0, 2)));
    EXPECT_EQ("Sat, 01 Jan 2000 12:00:00 +0000",
              KorToMailDate(CKorUTCTime(1, 1, 2000, 12, 0, 0, 0, 0, 0)));
}

TEST(KorMailDate, ReadsTheUsualForm)
{
    EXPECT_EQ("2024-03-05T19:37:09+05:30", Read("Tue, 05 Mar 2024 19:37:09 +0530"));
    EXPECT_EQ("2024-03-05T14:07:09-08:00", Read("Tue, 5 Mar 2024 14:07:09 -0800"));
    EXPECT_EQ("2024-03-05T14:07:09Z", Read("5 Mar 2024 14:07:09 -0000"));
    EXPECT_EQ("2024-03-05T14:07:00Z", Read("Tue, 5 Mar 2024 14:07 +0000"));
    CKorUTCTime oTime;
    ASSERT_TRUE(KorFromMailDate("Tue, 05 Mar 2024 19:37:09 +0530", oTime));
    EXPECT_EQ(TimeOfUnix(UNIX_5_MARCH), oTime);
    int nOffset = 0;
    ASSERT_TRUE(KorFromMailDate("5 Mar 2024 14:07 -9959", oTime, &nOffset));
    EXPECT_EQ(-5999, nOffset);
}

TEST(KorMailDate, ReadsNamesInAnyCase)
{
    EXPECT_EQ("2024-03-05T14:07:09-05:00", Read("TUE, 5 mar 2024 14:07:09 esT"));
}

TEST(KorMailDate, ReadsYearsOfTwoAndThreeDigits)
{
    EXPECT_EQ("2000-03-05T14:07:00Z", Read("5 Mar 00 14:07 GMT"));
    EXPECT_EQ("2049-03-05T14:07:00Z", Read("5 Mar 49 14:07 GMT"));
    EXPECT_EQ("1950-03-05T14:07:00Z", Read("5 Mar 50 14:07 GMT"));
    EXPECT_EQ("1999-03-05T14:07:00Z", Read("5 Mar 99 14:07 GMT"));
    EXPECT_EQ("2024-03-05T14:07:00Z", Read("5 Mar 124 14:07 GMT"));
    EXPECT_EQ("1900-03-05T14:07:00Z", Read("5 Mar 000 14:07 GMT"));
    EXPECT_EQ("2024-03-05T14:07:00Z", Read("5 Mar 02024 14:07 GMT"));
}

TEST(KorMailDate, ReadsNamedZones)
{
    const std::pair<const char*, const char*> aZones[] = {
        {"UT", "Z"},       {"GMT", "Z"},      {"EDT", "-04:00"}, {"EST", "-05:00"},
        {"CDT", "-05:00"}, {"CST", "-06:00"}, {"MDT", "-06:00"}, {"MST", "-07:00"},
        {"PDT", "-07:00"}, {"PST", "-08:00"}, {"Z", "Z"},        {"A", "Z"},
        {"i", "Z"},        {"K", "Z"},        {"y", "Z"},        {"UTC", "Z"},
        {"CET", "Z"},      {"XYZZY", "Z"}};
    for (const auto& oZone : aZones)
        EXPECT_EQ(std::string("2024-03-05T14:07:00") + oZone.second,
                  Read(std::string("5 Mar 2024 14:07 ") + oZone.first))
            << oZone.first;
    EXPECT_EQ("", Read("5 Mar 2024 14:07 J"));
    EXPECT_EQ("", Read("5 Mar 2024 14:07 j"));
}

TEST(KorMailDate, ReadsOverBlanksFoldsAndComments)
{
    const std::string strTime = "2024-03-05T14:07:09+01:00";
    EXPECT_EQ(strTime, Read("  Tue\t,  5 \t Mar  2024  14 : 07 : 09  +0100  "));
    EXPECT_EQ(strTime, Read("Tue, 5 Mar 2024\r\n 14:07:09\r\n\t+0100 \r\n "));
    EXPECT_EQ(strTime, Read("Tue, 5 Mar 2024\n 14:07:09 +0100"));
    EXPECT_EQ(strTime, Read("Tue,5Mar2024(x)14:07:09 +0100"));
    EXPECT_EQ(strTime, Read("Tue, 5 Mar 2024 14:07:09 +0100 (CET (winter) \\) \\( time)"));
    EXPECT_EQ(strTime, Read("(a)Tue(b),(c)5(d)Mar(e)2024(f)14(g):(h)07(i):(j)09(k)+0100(l)()"));
}

TEST(KorMailDate, RefusesAWrongWeekday)
{
    EXPECT_EQ("", Read("Mon, 5 Mar 2024 14:07:09 +0100"));
    // By the date of the text, whatever day it is in Greenwich.
    EXPECT_EQ("2024-03-05T00:07:09+01:00", Read("Tue, 5 Mar 2024 00:07:09 +0100"));
    EXPECT_EQ("", Read("Mon, 5 Mar 2024 00:07:09 +0100"));
}

TEST(KorMailDate, TakesSecond60ForTheNextSecondAtTheEndOfADayOfUtcOnly)
{
    EXPECT_EQ("2017-01-01T00:00:00Z", Read("Sat, 31 Dec 2016 23:59:60 GMT"));
    EXPECT_EQ("2017-01-01T01:00:00+01:00", Read("Sun, 1 Jan 2017 00:59:60 +0100"));
    EXPECT_EQ("", Read("Sat, 31 Dec 2016 23:59:60 +0100"));
    EXPECT_EQ("", Read("Sat, 31 Dec 2016 23:58:60 GMT"));
}

TEST(KorMailDate, RefusesEverythingElse)
{
    for (const char* pszText : {"",
                                " ",
                                "Tue",
                                "Tue,",
                                "5 Mar 2024",
                                "5 Mar 2024 14:07",
                                "5 Mar 2024 14:07:09",
                                "Tue 5 Mar 2024 14:07:09 GMT",
                                ", 5 Mar 2024 14:07:09 GMT",
                                "Tuesday, 5 Mar 2024 14:07:09 GMT",
                                "Tu, 5 Mar 2024 14:07:09 GMT",
                                "Xyz, 5 Mar 2024 14:07:09 GMT",
                                "Tue, 5 March 2024 14:07:09 GMT",
                                "Tue, 5 Xyz 2024 14:07:09 GMT",
                                "Tue, 5 3 2024 14:07:09 GMT",
                                "Tue, Mar 5 2024 14:07:09 GMT",
                                "005 Mar 2024 14:07 GMT",
                                "0 Mar 2024 14:07 GMT",
                                "32 Mar 2024 14:07 GMT",
                                "30 Feb 2024 14:07 GMT",
                                "29 Feb 2023 14:07 GMT",
                                "5 Mar 4 14:07 GMT",
                                "5 Mar 14:07 GMT",
                                "5 Mar 2024, 14:07 GMT",
                                "5 Mar 2024 24:00 GMT",
                                "5 Mar 2024 14:60 GMT",
                                "5 Mar 2024 14:07:61 GMT",
                                "5 Mar 2024 4:07 GMT",
                                "5 Mar 2024 14:7 GMT",
                                "5 Mar 2024 14:07:9 GMT",
                                "5 Mar 2024 14:07:09.5 GMT",
                                "5 Mar 2024 14:07: GMT",
                                "5 Mar 2024 1407 GMT",
                                "5 Mar 2024 14.07 GMT",
                                "5 Mar 2024 14:07 +100",
                                "5 Mar 2024 14:07 +01:00",
                                "5 Mar 2024 14:07 +01000",
                                "5 Mar 2024 14:07 +0160",
                                "5 Mar 2024 14:07 + 0100",
                                "5 Mar 2024 14:07 0100",
                                "5 Mar 2024 14:07 GMT+1",
                                "5 Mar 2024 14:07 GMT x",
                                "5 Mar 2024 14:07 GMT (",
                                "5 Mar 2024 14:07 GMT (()",
                                "5 Mar 2024 14:07 GMT )",
                                "5 Mar 2024 14:07 GMT (\\",
                                "5 Mar 2024 14:07 GMT (\\)",
                                "5 Mar 2024 (14:07 GMT",
                                "5 Mar 2024\r\n14:07 GMT",
                                "5 Mar 2024\r 14:07 GMT",
                                "5 Mar 2024 14:07 GMT\r\n",
                                "5 Mar 2024 14:07 GMT\n",
                                "5-Mar-2024 14:07 GMT",
                                "Tue Mar  5 14:07:09 2024",
                                "2024-03-05T14:07:09Z",
                                "5 Mar 2923 14:07 GMT",
                                "5 Mar 999999999 14:07 GMT",
                                "5 Mar 9999999999 14:07 GMT",
                                "-5 Mar 2024 14:07 GMT",
                                "5 Mar -2024 14:07 GMT"})
        EXPECT_EQ("", Read(pszText)) << pszText;
    EXPECT_EQ("", Read(std::string("5 Mar 2024 14:07 GMT\0", 21)));
}

TEST(KorMailDate, ReadsBackWhatItWrote)
{
    RandomTicks oRandom;
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t nSeconds = oRandom.Next(-EPOCH_SECONDS, 30000000000);
        const int nOffset = static_cast<int>(oRandom.Next(-5999, 5999));
        const std::string strText = KorToMailDate(TimeOfUnix(nSeconds), nOffset);
        CKorUTCTime oTime;
        int nRead = UNTOUCHED;
        if (strText.empty())
            continue;
        ASSERT_TRUE(KorFromMailDate(strText, oTime, &nRead)) << strText;
        ASSERT_EQ(TimeOfUnix(nSeconds), oTime) << strText;
        ASSERT_EQ(nOffset, nRead) << strText;
    }
}

TEST(KorMailDate, AgreesWithPython)
{
    RandomTicks oRandom;
    std::string strInput;
    std::vector<std::string> vecExpected;
    for (int i = 0; i < 2000; ++i) {
        const std::int64_t nSeconds = oRandom.Next(-62135000000, 30000000000); // from year 1 on
        const int nOffset = static_cast<int>(oRandom.Next(-1439, 1439));
        strInput += std::to_string(nSeconds) + " " + std::to_string(nOffset) + "\n";
        vecExpected.push_back(KorToMailDate(TimeOfUnix(nSeconds), nOffset));
    }
    const std::vector<std::string> vecLines = LinesOfPython({"-c", R"(
import datetime, email.utils, sys
epoch = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
for line in sys.stdin:
    seconds, offset = map(int, line.split())
    zone = datetime.timezone(datetime.timedelta(minutes=offset))
    print(email.utils.format_datetime((epoch + datetime.timedelta(seconds=seconds)).astimezone(zone)))
)"},
                                                            strInput);
    EXPECT_EQ(vecExpected, vecLines);
}

} // namespace
