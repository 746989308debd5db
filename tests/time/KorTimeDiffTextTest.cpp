#include "time/KorTimeDiff.h"

#include <climits>
#include <cstdint>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

using EDiffFormat = CKorTimeDiff::EDiffFormat;

CKorTimeDiff TicksSpan(long long nTicks)
{
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(nTicks, true);
    return oSpan;
}

std::string Text(const CKorTimeDiff& oSpan, int nFormat)
{
    return KorToString(oSpan, static_cast<EDiffFormat>(nFormat));
}

/// Reads a span that was something else before.
bool Read(CKorTimeDiff& oSpan, int nFormat, const std::string& strText)
{
    oSpan = TicksSpan(77);
    return KorFromString(oSpan, static_cast<EDiffFormat>(nFormat), strText);
}

const CKorTimeDiff SPAN(0, 1, 2, 3, 500, 0, 0);

TEST(KorTimeDiffText, HasItsFormatNumbers)
{
    EXPECT_EQ(0, CKorTimeDiff::eDiffMilliSeconds);
    EXPECT_EQ(1, CKorTimeDiff::eDiffHhMm);
    EXPECT_EQ(2, CKorTimeDiff::eDiffHhMmSs);
    EXPECT_EQ(3, CKorTimeDiff::eDiffHhMmSsMs);
    EXPECT_EQ(4, CKorTimeDiff::eDiffHhMmSsMsUs);
    EXPECT_EQ(5, CKorTimeDiff::eDiffHhMmSsMsUsNs);
    EXPECT_EQ(6, CKorTimeDiff::eDiffDaysHhMmSs);
    EXPECT_EQ(7, CKorTimeDiff::eDiffMicroSeconds);
}

TEST(KorTimeDiffText, WritesEveryFormat)
{
    const CKorTimeDiff oSpan = SPAN + CKorTimeDiff(0, 6, 70);
    EXPECT_EQ("3723500", Text(oSpan, 0));
    EXPECT_EQ("1:02", Text(oSpan, 1));
    EXPECT_EQ("1:02:03", Text(oSpan, 2));
    EXPECT_EQ("1:02:03.500", Text(oSpan, 3));
    EXPECT_EQ("1:02:03.500.006", Text(oSpan, 4));
    EXPECT_EQ("1:02:03.500.006.070", Text(oSpan, 5));
    EXPECT_EQ("0#01:02:03", Text(oSpan, 6));
    EXPECT_EQ("3723500006", Text(oSpan, 7));
    EXPECT_EQ("3723500000", Text(SPAN, 7));
}

TEST(KorTimeDiffText, WritesTheEmptySpan)
{
    EXPECT_EQ("0", Text(CKorTimeDiff(), 0));
    EXPECT_EQ("0:00:00.000.000.000", Text(CKorTimeDiff(), 5));
    EXPECT_EQ("0#00:00:00", Text(CKorTimeDiff(), 6));
}

TEST(KorTimeDiffText, WritesAllHoursAlsoBehindTheDays)
{
    EXPECT_EQ("1#26:00:00", Text(CKorTimeDiff(0, 26, 0, 0, 0, 0, 0), 6));
    EXPECT_EQ("26:00:00", Text(CKorTimeDiff(0, 26, 0, 0, 0, 0, 0), 2));
    EXPECT_EQ("100#2400:00:00", Text(CKorTimeDiff(100, 0, 0, 0, 0, 0, 0), 6));
}

TEST(KorTimeDiffText, WritesNinetyMinutesAsHoursAndMinutes)
{
    EXPECT_EQ("1:30", Text(CKorTimeDiff(0, 0, 90, 0, 0, 0, 0), 1));
}

TEST(KorTimeDiffText, WritesANegativeSpanWithTheHoursOfItsUnsignedTicks)
{
    const CKorTimeDiff oSpan(0, 0, 0, -1, 0, 0, 0);
    EXPECT_EQ("-1000", Text(oSpan, 0));
    EXPECT_EQ("-1000000", Text(oSpan, 7));
    const std::string strHours = std::to_string((0ULL - 100000000ULL) / 360000000000ULL);
    EXPECT_EQ("51240955", strHours);
    EXPECT_EQ("-" + strHours + ":00:01", Text(oSpan, 2));
    EXPECT_EQ("-" + strHours + ":00", Text(oSpan, 1));
    EXPECT_EQ("-2135039#00:00:01", Text(oSpan, 6));
}

TEST(KorTimeDiffText, WritesTheLimitsOfASpan)
{
    EXPECT_EQ("92233720368547", Text(TicksSpan(LLONG_MAX), 0));
    EXPECT_EQ("-92233720368547", Text(TicksSpan(LLONG_MIN), 0));
    EXPECT_EQ("-92233720368547758", Text(TicksSpan(LLONG_MIN), 7));
    EXPECT_EQ("25620477:52:48.547.758.070", Text(TicksSpan(LLONG_MAX), 5));
    EXPECT_EQ("-25620477:52:48.547.758.080", Text(TicksSpan(LLONG_MIN), 5));
}

TEST(KorTimeDiffText, WritesFehlerForAnUnknownFormat)
{
    for (const int nFormat : {8, 9, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ("Fehler ", Text(SPAN, nFormat)) << nFormat;
        EXPECT_EQ("-Fehler ", Text(TicksSpan(-1), nFormat)) << nFormat;
    }
    std::ostringstream oStream;
    CKorTimeDiff::SetDiffTimeFlag(oStream, static_cast<EDiffFormat>(9));
    oStream << SPAN;
    EXPECT_EQ("Fehler ", oStream.str());
}

TEST(KorTimeDiffText, WritesMillisecondsToAStreamWithoutAFormat)
{
    std::ostringstream oStream;
    oStream << SPAN;
    EXPECT_EQ("3723500", oStream.str());
}

TEST(KorTimeDiffText, SetDiffTimeFlagAnswersTheStream)
{
    std::ostringstream oStream;
    EXPECT_EQ(&oStream, &CKorTimeDiff::SetDiffTimeFlag(oStream, CKorTimeDiff::eDiffHhMm));
    EXPECT_EQ(&oStream, &(oStream << SPAN << ' ' << SPAN));
    EXPECT_EQ("1:02 1:02", oStream.str());
}

TEST(KorTimeDiffText, LeavesZeroAsTheFillCharacterAfterFieldsOfFixedWidth)
{
    std::ostringstream oStream;
    CKorTimeDiff::SetDiffTimeFlag(oStream, CKorTimeDiff::eDiffHhMm);
    oStream << SPAN << ' ' << std::setw(4) << 7;
    EXPECT_EQ("1:02 0007", oStream.str());
    std::ostringstream oTotal;
    oTotal << SPAN << ' ' << std::setw(4) << 7;
    EXPECT_EQ("3723500    7", oTotal.str());
}

TEST(KorTimeDiffText, TheFirstFieldObeysTheStreamsWidth)
{
    std::ostringstream oStream;
    CKorTimeDiff::SetDiffTimeFlag(oStream, CKorTimeDiff::eDiffHhMm);
    oStream << std::setw(5) << std::setfill('*') << SPAN;
    EXPECT_EQ("****1:02", oStream.str());
    oStream.str("");
    oStream << std::setw(3) << std::setfill('*') << TicksSpan(-360000000000LL);
    EXPECT_EQ("**-51240954:00", oStream.str());
}

TEST(KorTimeDiffText, ObeysTheBaseOfTheStream)
{
    std::ostringstream oStream;
    CKorTimeDiff::SetDiffTimeFlag(oStream, CKorTimeDiff::eDiffHhMmSs);
    oStream << std::hex << CKorTimeDiff(0, 26, 30, 59, 0, 0, 0);
    EXPECT_EQ("1a:1e:3b", oStream.str());
}

TEST(KorTimeDiffText, Time2StrWritesTheTicks)
{
    std::string strText = "old";
    SPAN.Time2Str(strText);
    EXPECT_EQ("372350000000", strText);
    TicksSpan(LLONG_MIN).Time2Str(strText);
    EXPECT_EQ("-9223372036854775808", strText);
}

TEST(KorTimeDiffText, ReadsTotals)
{
    CKorTimeDiff oSpan;
    EXPECT_TRUE(Read(oSpan, 0, "3723500"));
    EXPECT_EQ(SPAN, oSpan);
    EXPECT_TRUE(Read(oSpan, 0, "  -1000"));
    EXPECT_EQ(CKorTimeDiff(-1000LL), oSpan);
    EXPECT_TRUE(Read(oSpan, 7, "-5"));
    EXPECT_EQ(TicksSpan(-500), oSpan);
    EXPECT_FALSE(Read(oSpan, 0, "abc"));
    EXPECT_EQ(CKorTimeDiff(), oSpan);
    EXPECT_FALSE(Read(oSpan, 7, ""));
    EXPECT_EQ(CKorTimeDiff(), oSpan);
}

TEST(KorTimeDiffText, TotalsThatAreTooLargeWrapOrFail)
{
    CKorTimeDiff oSpan;
    EXPECT_TRUE(Read(oSpan, 0, "9223372036854775807"));
    EXPECT_EQ(TicksSpan(-100000), oSpan);
    EXPECT_FALSE(Read(oSpan, 0, "9223372036854775808"));
}

TEST(KorTimeDiffText, ReadsHoursAndMinutes)
{
    CKorTimeDiff oSpan;
    EXPECT_TRUE(Read(oSpan, 1, "1:30"));
    EXPECT_EQ(CKorTimeDiff(0, 0, 90, 0, 0, 0, 0), oSpan);
    EXPECT_TRUE(Read(oSpan, 1, "1:3"));
    EXPECT_EQ(CKorTimeDiff(0, 1, 3, 0, 0, 0, 0), oSpan);
    EXPECT_TRUE(Read(oSpan, 1, ":"));
    EXPECT_EQ(CKorTimeDiff(), oSpan);
}

TEST(KorTimeDiffText, FailsWhereASeparatorIsMissing)
{
    CKorTimeDiff oSpan;
    EXPECT_FALSE(Read(oSpan, 1, "1-30"));
    EXPECT_FALSE(Read(oSpan, 1, "130"));
    EXPECT_FALSE(Read(oSpan, 1, ""));
    EXPECT_FALSE(Read(oSpan, 1, " 1:30"));
    EXPECT_FALSE(Read(oSpan, 1, "-1:30"));
    EXPECT_FALSE(Read(oSpan, 2, "1:30"));
    EXPECT_FALSE(Read(oSpan, 3, "1:02:03:500"));
    EXPECT_FALSE(Read(oSpan, 6, "1:26:00:00"));
}

TEST(KorTimeDiffText, KeepsWhatItReadBeforeAMissingSeparator)
{
    CKorTimeDiff oSpan;
    EXPECT_FALSE(Read(oSpan, 2, "1:30"));
    EXPECT_EQ(CKorTimeDiff(0, 1, 30, 0, 0, 0, 0), oSpan);
}

TEST(KorTimeDiffText, ReadsSecondsAndMilliseconds)
{
    CKorTimeDiff oSpan;
    EXPECT_TRUE(Read(oSpan, 2, "01:02:03"));
    EXPECT_EQ(CKorTimeDiff(0, 1, 2, 3, 0, 0, 0), oSpan);
    EXPECT_TRUE(Read(oSpan, 3, "1:02:03.500"));
    EXPECT_EQ(SPAN, oSpan);
}

TEST(KorTimeDiffText, ReadsDays)
{
    CKorTimeDiff oSpan;
    EXPECT_TRUE(Read(oSpan, 6, "1234#05:06:07"));
    EXPECT_EQ(CKorTimeDiff(1234, 5, 6, 7, 0, 0, 0), oSpan);
    EXPECT_TRUE(Read(oSpan, 6, "1#26:00:00")); // what was written reads as days and all hours
    EXPECT_EQ(CKorTimeDiff(2, 2, 0, 0, 0, 0, 0), oSpan);
}

TEST(KorTimeDiffText, ReadsNothingInFormatsForWritingOnly)
{
    for (const int nFormat : {4, 5, 8, -1, INT_MAX}) {
        std::istringstream oStream("1:02:03.500.000");
        CKorTimeDiff::SetDiffTimeFlag(oStream, static_cast<EDiffFormat>(nFormat));
        CKorTimeDiff oSpan = SPAN;
        oStream >> oSpan;
        EXPECT_TRUE(oStream.good()) << nFormat;
        EXPECT_EQ(0, oStream.tellg()) << nFormat;
        EXPECT_EQ(CKorTimeDiff(), oSpan) << nFormat;
        EXPECT_TRUE(Read(oSpan, nFormat, "1:02:03.500.000")) << nFormat;
        EXPECT_EQ(CKorTimeDiff(), oSpan) << nFormat;
    }
}

TEST(KorTimeDiffText, ReadsMillisecondsFromAStreamWithoutAFormat)
{
    std::istringstream oStream("1500 7");
    CKorTimeDiff oSpan;
    oStream >> oSpan;
    EXPECT_EQ(CKorTimeDiff(1500LL), oSpan);
    oStream >> oSpan;
    EXPECT_EQ(CKorTimeDiff(7LL), oSpan);
}

} // namespace
