#include "tests/time/UTCTimeTextTest.h"
#include "time/KorLocalTime.h"
#include "time/KorUTCTime.h"

#include <climits>
#include <gtest/gtest.h>
#include <sstream>

namespace
{

TEST(KorUTCTimeText, ReadsEveryFormatItWrites)
{
    for (int nFormat = 0; nFormat <= 10; ++nFormat) {
        const CKorUTCTime oTime = Read(nFormat, Text(TIME, nFormat));
        const bool bHasDate = nFormat != 5 && nFormat != 9;
        EXPECT_EQ(bHasDate, oTime.IsTimeValid()) << nFormat;
        EXPECT_EQ(Text(TIME, nFormat), Text(oTime, nFormat));
    }
    EXPECT_EQ(TIME, Read(4, Text(TIME, 4)));
}

TEST(KorUTCTimeText, ReadsShortFields)
{
    EXPECT_EQ(Date(2024, 3, 5), Read(2, "5.3.2024"));
    EXPECT_TRUE(Read(2, "5.3.2024").IsTimeValid());
    EXPECT_EQ(Date(24, 3, 5), Read(2, "5.3.24"));
    EXPECT_TRUE(Read(2, "5.3.24").IsTimeValid());
}

TEST(KorUTCTimeText, ReadsFieldsWithoutSeparators)
{
    EXPECT_EQ(Date(2024, 3, 5), Read(2, "05032024"));
    EXPECT_TRUE(Read(2, "05032024").IsTimeValid());
}

TEST(KorUTCTimeText, ReadsATimeWithoutADateAsAnInvalidOneOfYearZero)
{
    const CKorUTCTime oTime = Read(5, "14:07:09");
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ("01.01.0000 14:07:09", Text(oTime, 1));
}

TEST(KorUTCTimeText, ReadsTwoDigitYearsInFormatEleven)
{
    EXPECT_EQ(CKorUTCTime(5, 3, 2045, 10, 0, 0, 0, 0, 0), Read(11, "05 03 45 10:00:00"));
    EXPECT_EQ(CKorUTCTime(5, 3, 1946, 10, 0, 0, 0, 0, 0), Read(11, "05 03 46 10:00:00"));
    EXPECT_EQ(CKorUTCTime(5, 3, 2004, 10, 0, 0, 0, 0, 0), Read(11, "05 \t 03\n 04 10:00:00"));
    EXPECT_TRUE(Read(11, "05 03 99 10:00:00").IsTimeValid());
}

TEST(KorUTCTimeText, TheMailFormDoesNotReadBack)
{
    EXPECT_FALSE(Read(11, Text(TIME, 11)).IsTimeValid());
}

TEST(KorUTCTimeText, SkipsLeadingAndInnerWhiteSpace)
{
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 14, 7, 9, 0, 0, 0), Read(1, " \n05.03.2024 \t 14:07:09"));
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 14, 7, 9, 0, 0, 0), Read(1, "05.03.202414:07:09"));
}

TEST(KorUTCTimeText, ClampsWhatItReads)
{
    const CKorUTCTime oTime = Read(1, "31.02.2023 24:60:61");
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ("28.02.2023 23:59:59", Text(oTime, 1));
}

TEST(KorUTCTimeText, ATextThatEndsEarlyIsNotValid)
{
    CKorUTCTime oTime = TIME;
    oTime.SetDate("05.03.2024 14:07", CKorUTCTime::eDateTime);
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ("05.03.2024 14:07:00", Text(oTime, 1));
    EXPECT_FALSE(Read(2, "").IsTimeValid());
}

TEST(KorUTCTimeText, AFailedStreamKeepsTheFailBitAlone)
{
    std::istringstream oStream("05.03");
    CKorUTCTime oTime(1LL);
    CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eDate);
    EXPECT_EQ(&oStream, &(oStream >> oTime));
    EXPECT_EQ(std::ios_base::failbit, oStream.rdstate());
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTimeText, WhiteSpaceAtTheEndOfTheFormatNeedsNoText)
{
    for (const char* pszText : {"03/05/2024", "03/05/2024 ", "3/5/2024", "03/05/202"}) {
        std::istringstream oStream(pszText);
        CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eUsDate);
        CKorUTCTime oTime;
        oStream >> oTime;
        EXPECT_FALSE(oStream.fail()) << pszText;
        EXPECT_TRUE(oTime.IsTimeValid()) << pszText;
    }
}

TEST(KorUTCTimeText, ReadsOneTimeAfterTheOther)
{
    std::istringstream oStream("05.03.2024 14:07:09.250 06.03.2024 15:08:10.5x");
    CKorUTCTime oFirst;
    CKorUTCTime oSecond;
    oStream >> oFirst >> oSecond;
    EXPECT_TRUE(oStream.good());
    EXPECT_EQ('x', oStream.get());
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 14, 7, 9, 250, 0, 0), oFirst);
    EXPECT_EQ(CKorUTCTime(6, 3, 2024, 15, 8, 10, 5, 0, 0), oSecond);
}

TEST(KorUTCTimeText, ReadsNothingInAnUnknownFormat)
{
    for (const int nFormat : {12, -1, INT_MAX}) {
        CKorUTCTime oTime = TIME;
        oTime.SetDate("06.03.2024 15:08:10", static_cast<ETimeFormat>(nFormat));
        EXPECT_EQ(TIME, oTime);
        EXPECT_TRUE(oTime.IsTimeValid());
        EXPECT_TRUE(KorFromString(oTime, static_cast<ETimeFormat>(nFormat), "06.03.2024"));
        EXPECT_EQ(TIME, oTime);

        std::istringstream oStream(" \t06.03.2024");
        CKorUTCTime::SetTimeFlag(oStream, static_cast<ETimeFormat>(nFormat));
        oStream >> oTime;
        EXPECT_EQ('0', oStream.peek());
    }
}

TEST(KorUTCTimeText, KorFromStringIsTrueForAnyText)
{
    for (const char* pszText : {"abc", "", "1", "99.99.9999 99:99:99.999"}) {
        for (int nFormat = 0; nFormat <= 11; ++nFormat) {
            CKorUTCTime oTime = TIME;
            EXPECT_TRUE(KorFromString(oTime, static_cast<ETimeFormat>(nFormat), pszText));
            EXPECT_FALSE(oTime.IsTimeValid()) << pszText << ' ' << nFormat;
        }
    }
}

TEST(KorUTCTimeText, KorFromStringTakesMissingFieldsAsZero)
{
    CKorUTCTime oTime;
    EXPECT_TRUE(KorFromString(oTime, CKorUTCTime::eDateTimeMs, "05.03.2024 14:07"));
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 14, 7, 0, 0, 0, 0), oTime);
}

} // namespace
