#include "tests/time/InstantSupport.h"
#include "time/KorIsoTime.h"
#include "time/KorUnixTime.h"

#include <gtest/gtest.h>
#include <limits>

namespace
{

using Limits = std::numeric_limits<std::int64_t>;

CKorTimeDiff Span(std::int64_t nTicks)
{
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(nTicks, true);
    return oSpan;
}

std::string Write(std::int64_t nTicks)
{
    return KorToIsoDuration(Span(nTicks));
}

/// The text as it is read and written again; "" when it is refused.
std::string Reread(const std::string& strText)
{
    const CKorTimeDiff oUntouched = Span(-4711);
    CKorTimeDiff oSpan = oUntouched;
    if (!KorFromIsoDuration(strText, oSpan)) {
        EXPECT_EQ(oUntouched, oSpan) << strText;
        return "";
    }
    return KorToIsoDuration(oSpan);
}

TEST(KorIsoDuration, WritesThePartsThatAreNotZero)
{
    EXPECT_EQ("PT0S", Write(0));
    EXPECT_EQ("PT1H30M", KorToIsoDuration(CKorTimeDiff(0, 0, 90, 0, 0, 0, 0)));
    EXPECT_EQ("P1D", KorToIsoDuration(CKorTimeDiff(1, 0, 0, 0, 0, 0, 0)));
    EXPECT_EQ("P1DT1S", KorToIsoDuration(CKorTimeDiff(1, 0, 0, 1, 0, 0, 0)));
    EXPECT_EQ("P15DT1H2M3.5S", KorToIsoDuration(CKorTimeDiff(15, 1, 2, 3, 500, 0, 0)));
    EXPECT_EQ("-P1DT0.5S", KorToIsoDuration(CKorTimeDiff(-1, 0, 0, 0, -500, 0, 0)));
    EXPECT_EQ("PT0.00000001S", Write(1));
    EXPECT_EQ("-PT0.00000001S", Write(-1));
    EXPECT_EQ("PT10S", Write(10 * TICKS_PER_SECOND));
    EXPECT_EQ("PT59.99999999S", Write(60 * TICKS_PER_SECOND - 1));
}

TEST(KorIsoDuration, WritesTheEndsOfTheRange)
{
    EXPECT_EQ("P1067519DT21H52M48.54775807S", Write(Limits::max()));
    EXPECT_EQ("-P1067519DT21H52M48.54775808S", Write(Limits::min()));
}

TEST(KorIsoDuration, ReadsEachUnitAndTheirSum)
{
    EXPECT_EQ("P14D", Reread("P2W"));
    EXPECT_EQ("P3D", Reread("P3D"));
    EXPECT_EQ("PT4H", Reread("PT4H"));
    EXPECT_EQ("PT5M", Reread("PT5M"));
    EXPECT_EQ("PT6S", Reread("PT6S"));
    EXPECT_EQ("P17DT4H5M6.7S", Reread("P2W3DT4H5M6.7S"));
    EXPECT_EQ("P1DT1S", Reread("P1DT1S"));
    EXPECT_EQ("PT0S", Reread("P0D"));
    EXPECT_EQ("PT1H30M", Reread("PT90M"));
    EXPECT_EQ("P1D", Reread("PT0024H00M"));
}

TEST(KorIsoDuration, ReadsASignInFront)
{
    EXPECT_EQ("PT1S", Reread("+PT1S"));
    EXPECT_EQ("-PT1S", Reread("-PT1S"));
    EXPECT_EQ("PT0S", Reread("-PT0S"));
}

TEST(KorIsoDuration, CutsTheFractionToTicks)
{
    EXPECT_EQ("PT0.5S", Reread("PT0,5S"));
    EXPECT_EQ("PT1.00000001S", Reread("PT1.000000019S"));
    EXPECT_EQ("-PT1.00000001S", Reread("-PT1.000000019S"));
}

TEST(KorIsoDuration, RefusesEverythingElse)
{
    for (const char* pszText :
         {"",        "P",      "PT",     "P1DT",   "T1H",    "1H",       "PT1",
          "P1",      "P1H",    "P1S",    "PT1D",   "PT1W",   "P1Y",      "P1M",
          "P1Y2D",   "P1M2D",  "PT1H1H", "PT1M1H", "PT1S1M", "P1D1W",    "P1D1D",
          "PT1HT1M", "PT1.5H", "P0.5D",  "PT1.5M", "PT1.S",  "PT.5S",    "PT1.1234567890S",
          "PT1.5",   "PT-1H",  "P-1D",   "--PT1S", "+-PT1S", "- PT1S",   " PT1S",
          "PT1S ",   "PT1Sx",  "pt1s",   "PT1h",   "P T1S",  "PT1H 30M", "PTS",
          "PD",      "PT1H30", "P1DT1W"})
        EXPECT_EQ("", Reread(pszText)) << pszText;
    EXPECT_EQ("", Reread(std::string("PT1S\0", 5)));
}

TEST(KorIsoDuration, RefusesWhatIsBeyondTheRangeOfSpans)
{
    EXPECT_EQ("P1067519DT21H52M48.54775807S", Reread("PT92233720368.54775807S"));
    EXPECT_EQ("-P1067519DT21H52M48.54775808S", Reread("-PT92233720368.54775808S"));
    for (const char* pszText :
         {"PT92233720368.54775808S", "-PT92233720368.54775809S", "P1067519DT21H52M48.54775808S",
          "P1067520D", "P152503W", "PT18446744073709551615S", "PT18446744073709551616S",
          "P1067519DT1067519H", "PT184467440737.09551616S", "P2135039DT9H45M38S",
          "PT99999999999999999999999999999999999999999H"})
        EXPECT_EQ("", Reread(pszText)) << pszText;
}

TEST(KorIsoDuration, ReadsBackWhatItWrote)
{
    RandomTicks oRandom;
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t nTicks = oRandom.Next() >> oRandom.Next(0, 62);
        CKorTimeDiff oSpan;
        ASSERT_TRUE(KorFromIsoDuration(Write(nTicks), oSpan)) << nTicks;
        ASSERT_EQ(Span(nTicks), oSpan) << nTicks;
    }
}

} // namespace
