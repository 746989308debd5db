#include "tests/time/UTCTimeTextTest.h"
#include "time/KorLocalTime.h"
#include "time/KorUTCTime.h"

#include <climits>
#include <gtest/gtest.h>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace
{

TEST(KorUTCTimeText, HasItsNumbers)
{
    EXPECT_EQ(0, CKorUTCTime::eDateTimeMs);
    EXPECT_EQ(1, CKorUTCTime::eDateTime);
    EXPECT_EQ(2, CKorUTCTime::eDate);
    EXPECT_EQ(3, CKorUTCTime::eDateTimeUs);
    EXPECT_EQ(4, CKorUTCTime::eDateTimeNs);
    EXPECT_EQ(5, CKorUTCTime::eTime);
    EXPECT_EQ(6, CKorUTCTime::eUsDateTime);
    EXPECT_EQ(7, CKorUTCTime::eUsDate);
    EXPECT_EQ(8, CKorUTCTime::eIsoDate);
    EXPECT_EQ(9, CKorUTCTime::eTimeMs);
    EXPECT_EQ(10, CKorUTCTime::eIsoDateTimeMs);
    EXPECT_EQ(11, CKorUTCTime::eMailFormat);
}

TEST(KorUTCTimeText, KeepsTheDocumentedFormatTable)
{
    struct Open : CKorUTCTime
    {
        static const std::int32_t (&Table())[12][17] { return m_aoFormatTable; }
    };
    const std::int32_t anExpected[12][17] = {
        {0, 10, 1, 10, 2, 14, 4, 12, 5, 12, 6, 10, 7, 15, 15, 15, 15},
        {0, 10, 1, 10, 2, 14, 4, 12, 5, 12, 6, 15, 15, 15, 15, 15, 15},
        {0, 10, 1, 10, 2, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15},
        {0, 10, 1, 10, 2, 14, 4, 12, 5, 12, 6, 10, 7, 10, 8, 15, 15},
        {0, 10, 1, 10, 2, 14, 4, 12, 5, 12, 6, 10, 7, 10, 8, 10, 9},
        {4, 12, 5, 12, 6, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15},
        {1, 11, 0, 11, 2, 14, 4, 12, 5, 12, 6, 15, 15, 15, 15, 15, 15},
        {1, 11, 0, 11, 2, 14, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15},
        {2, 16, 1, 16, 0, 14, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15},
        {4, 12, 5, 12, 6, 10, 7, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15},
        {2, 16, 1, 16, 0, 14, 4, 12, 5, 12, 6, 10, 7, 15, 15, 15, 15},
        {0, 14, 1, 14, 3, 14, 4, 12, 5, 12, 6, 15, 15, 15, 15, 15, 15},
    };
    for (int nFormat = 0; nFormat < 12; ++nFormat)
        for (int nElement = 0; nElement < 17; ++nElement)
            EXPECT_EQ(anExpected[nFormat][nElement], Open::Table()[nFormat][nElement])
                << nFormat << ' ' << nElement;
}

TEST(KorUTCTimeText, WritesEveryFormat)
{
    EXPECT_EQ("05.03.2024 14:07:09.250", Text(TIME, 0));
    EXPECT_EQ("05.03.2024 14:07:09", Text(TIME, 1));
    EXPECT_EQ("05.03.2024", Text(TIME, 2));
    EXPECT_EQ("05.03.2024 14:07:09.250.125", Text(TIME, 3));
    EXPECT_EQ("05.03.2024 14:07:09.250.125.990", Text(TIME, 4)); // the resolution is 10 ns
    EXPECT_EQ("14:07:09", Text(TIME, 5));
    EXPECT_EQ("03/05/2024 14:07:09", Text(TIME, 6));
    EXPECT_EQ("03/05/2024 ", Text(TIME, 7));
    EXPECT_EQ("2024-03-05 ", Text(TIME, 8));
    EXPECT_EQ("14:07:09.250", Text(TIME, 9));
    EXPECT_EQ("2024-03-05 14:07:09.250", Text(TIME, 10));
    EXPECT_EQ("5 Mar 24 14:07 +0100", Text(TIME, 11));
    for (int nFormat = 0; nFormat <= 11; ++nFormat)
        EXPECT_EQ(Text(TIME, nFormat), TIME.Time2Str(static_cast<ETimeFormat>(nFormat)));
}

TEST(KorUTCTimeText, FormatsSevenAndEightEndInOneSpace)
{
    EXPECT_EQ("03/05/2024 ", Text(TIME, CKorUTCTime::eUsDate));
    EXPECT_EQ("2024-03-05 ", Text(TIME, CKorUTCTime::eIsoDate));
}

TEST(KorUTCTimeText, WritesAStreamWithoutAFormatInFormatZero)
{
    std::ostringstream oStream;
    oStream << TIME;
    EXPECT_EQ("05.03.2024 14:07:09.250", oStream.str());
}

TEST(KorUTCTimeText, KeepsTheFormatOfEachStream)
{
    std::ostringstream oTime;
    std::ostringstream oDate;
    EXPECT_EQ(&oTime, &CKorUTCTime::SetTimeFlag(oTime, CKorUTCTime::eTime));
    CKorUTCTime::SetTimeFlag(oDate, CKorUTCTime::eDate);
    EXPECT_EQ(&oTime, &(oTime << TIME << ',' << TIME));
    oDate << TIME;
    EXPECT_EQ("14:07:09,14:07:09", oTime.str());
    EXPECT_EQ("05.03.2024", oDate.str());
    CKorUTCTime::SetTimeFlag(oTime, CKorUTCTime::eDateTimeMs);
    oTime << ',' << TIME;
    EXPECT_EQ("14:07:09,14:07:09,05.03.2024 14:07:09.250", oTime.str());
}

TEST(KorUTCTimeText, WritesEarlyYearsWithFourDigits)
{
    for (int nFormat = 0; nFormat <= 4; ++nFormat)
        EXPECT_EQ("01.02.0987", Text(Date(987, 2, 1), nFormat).substr(0, 10));
    EXPECT_EQ("0007-02-01 ", Text(Date(7, 2, 1), 8));
}

TEST(KorUTCTimeText, WritesNothingInAnUnknownFormat)
{
    for (const int nFormat : {12, 13, 1000, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ("", Text(TIME, nFormat)) << nFormat;
        std::ostringstream oStream;
        CKorUTCTime::SetTimeFlag(oStream, static_cast<ETimeFormat>(nFormat));
        oStream << std::setw(9) << TIME;
        EXPECT_EQ("", oStream.str()) << nFormat;
        EXPECT_EQ(9, oStream.width()) << nFormat;
    }
}

TEST(KorUTCTimeText, TheFirstDayOfAnEraReadsAsThatOfYearZero)
{
    EXPECT_EQ("01.01.0000 12:00:00", Text(CKorUTCTime(1, 1, 2000, 12, 0, 0, 0, 0, 0), 1));
}

TEST(KorUTCTimeText, LeavesZeroAsTheFillCharacter)
{
    std::ostringstream oStream;
    oStream.fill('*');
    oStream << TIME;
    EXPECT_EQ('0', oStream.fill());
    EXPECT_EQ(0, oStream.width());
}

TEST(KorUTCTimeText, OverridesTheWidthOfTheStream)
{
    std::ostringstream oStream;
    oStream << std::setw(40) << TIME;
    EXPECT_EQ("05.03.2024 14:07:09.250", oStream.str());
}

TEST(KorUTCTimeText, ObeysBaseAndAdjustmentOfTheStream)
{
    std::ostringstream oHex;
    oHex << std::hex << TIME;
    EXPECT_EQ("05.03.07e8 0e:07:09.0fa", oHex.str());
    std::ostringstream oLeft;
    oLeft << std::left << TIME;
    EXPECT_EQ("50.30.2024 14:70:90.250", oLeft.str());
    std::ostringstream oSigns;
    oSigns << std::showpos << TIME;
    EXPECT_EQ("+5.+3.+2024 +14:+7:+9.+250", oSigns.str());
}

struct Grouping : std::numpunct<char>
{
    std::string do_grouping() const override { return "\3"; }
    char do_thousands_sep() const override { return '\''; }
};

TEST(KorUTCTimeText, ObeysTheLocaleOfTheStream)
{
    std::ostringstream oStream;
    oStream.imbue(std::locale(std::locale::classic(), new Grouping));
    CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eDate);
    oStream << TIME;
    EXPECT_EQ("05.03.2'024", oStream.str());
}

TEST(KorUTCTimeText, TextsObeyTheGlobalLocaleLikeNewStreams)
{
    const std::locale oOld = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const std::string strText = Text(TIME, 2);
    const std::string strSpan = KorToString(CKorTimeDiff(12345LL), CKorTimeDiff::eDiffMilliSeconds);
    std::locale::global(oOld);
    EXPECT_EQ("05.03.2'024", strText);
    EXPECT_EQ("12'345", strSpan);
    EXPECT_EQ("05.03.2024", Text(TIME, 2));
}

TEST(KorUTCTimeText, WritesTheMailForm)
{
    const CKorUTCTime oTime(1, 1, 2024, 9, 5, 33, 0, 0, 0);
    std::ostringstream oStream;
    EXPECT_EQ(&oStream, &oTime.MailFormat(oStream));
    EXPECT_EQ("1 Jan 24 09:05 +0100", oStream.str());
    EXPECT_EQ('0', oStream.fill());
    const char* const apszMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (unsigned nMonth = 1; nMonth <= 12; ++nMonth)
        EXPECT_EQ(std::string("31 ") + apszMonths[nMonth - 1] + " 07 00:00 +0100",
                  "31" + Text(Date(2007, nMonth, 28), 11).substr(2));
}

TEST(KorUTCTimeText, TheMailFormObeysTheWidthOfTheStream)
{
    std::ostringstream oStream;
    oStream << std::setw(4) << std::setfill('*');
    TIME.MailFormat(oStream);
    EXPECT_EQ("***5 Mar 24 14:07 +0100", oStream.str());
}

TEST(KorUTCTimeText, TheMailFormFlushes)
{
    struct : std::stringbuf
    {
        int sync() override
        {
            ++nFlushes;
            return 0;
        }
        int nFlushes = 0;
    } oBuffer;
    std::ostream oStream(&oBuffer);
    oStream << TIME;
    EXPECT_EQ(0, oBuffer.nFlushes);
    TIME.MailFormat(oStream);
    EXPECT_EQ(1, oBuffer.nFlushes);
}

TEST(KorUTCTimeText, WritesNothingToAFailedStream)
{
    std::ostringstream oStream;
    oStream.setstate(std::ios_base::failbit);
    oStream << TIME;
    EXPECT_EQ("", oStream.str());
    EXPECT_EQ('0', oStream.fill());
    EXPECT_EQ(3, oStream.width()); // of the last field, like any number that is not written
}

/// Prints in a way of its own.
class Quoted : public CKorUTCTime
{
public:
    using CKorUTCTime::CKorUTCTime;
    std::ostream& PutStream(std::ostream& oStream) const override
    {
        return CKorUTCTime::PutStream(oStream << '<') << '>';
    }
    std::istream& GetStream(std::istream& oStream) override
    {
        oStream.ignore(1);
        return CKorUTCTime::GetStream(oStream).ignore(1);
    }
};

TEST(KorUTCTimeText, TextsAreReadByTheGetStreamOfADerivedClass)
{
    const CKorUTCTime oWritten(5, 3, 2024, 0, 0, 0, 0, 0, 0);
    Quoted oTime;
    std::istringstream oStream("<05.03.2024>");
    CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eDate);
    oStream >> oTime;
    EXPECT_EQ(oWritten, oTime);

    oTime = Quoted();
    static_cast<CKorUTCTime&>(oTime).SetDate("<05.03.2024>", CKorUTCTime::eDate);
    EXPECT_EQ(oWritten, oTime);

    oTime = Quoted();
    EXPECT_TRUE(KorFromString(oTime, CKorUTCTime::eDate, "<05.03.2024>"));
    EXPECT_EQ(oWritten, oTime);
}

TEST(KorUTCTimeText, TextsUseThePutStreamOfADerivedClass)
{
    const Quoted oTime(5, 3, 2024, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ("<05.03.2024>", Text(oTime, 2));
    EXPECT_EQ("<05.03.2024>", oTime.Time2Str(CKorUTCTime::eDate));
}

TEST(KorUTCTimeText, ALocalTimeWritesItsClock)
{
    const CKorLocalTime oTime(5, 3, 2024, 10, 30, 0, 0, 2);
    EXPECT_EQ("05.03.2024 10:30:00.000", Text(oTime, 0));
    std::ostringstream oStream;
    oStream << oTime;
    EXPECT_EQ("05.03.2024 10:30:00.000", oStream.str());
}

TEST(KorUTCTimeText, ALocalTimeIsMadeOfATextOfItsClock)
{
    const CKorLocalTime oTime("05.03.2024 10:30:00", CKorUTCTime::eDateTime, 2);
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(10, oTime.GetHour());
    EXPECT_EQ(2, oTime.GetTimezone());
    EXPECT_TRUE(static_cast<const CKorUTCTime&>(oTime) ==
                CKorUTCTime(5, 3, 2024, 8, 30, 0, 0, 0, 0));
    EXPECT_FALSE(CKorLocalTime("abc", CKorUTCTime::eDateTime, 2).IsTimeValid());
}

TEST(KorUTCTimeText, ReadingALocalTimeFromAStreamTakesTheTextForUTC)
{
    CKorLocalTime oTime(5, 3, 2024, 10, 30, 0, 0, 2);
    oTime.SetDate("06.03.2024 10:30:00", CKorUTCTime::eDateTime);
    EXPECT_EQ("06.03.2024 12:30:00", Text(oTime, 1));
}

TEST(KorUTCTimeText, ANegativeLocalClockIsWrittenWithItsSigns)
{
    CKorLocalTime oTime(0LL, 0);
    oTime.ChangeTimezone(-1);
    EXPECT_EQ("-1:00:00", Text(oTime, 5));
    oTime.SetHighResolutionLocaltime(900000);
    EXPECT_EQ("00:-59:-59.-991", Text(oTime, 9));
}

TEST(KorUTCTimeText, ATextWithALetterBetweenDateAndClockIsAValidMidnight)
{
    const CKorUTCTime oTime("2024-03-05T14:07:09.250", CKorUTCTime::eIsoDateTimeMs);
    EXPECT_EQ(Date(2024, 3, 5), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTimeText, AFractionOfOneDigitCountsMilliseconds)
{
    const CKorUTCTime oTime("2024-03-05 14:07:09.5 ", CKorUTCTime::eIsoDateTimeMs);
    EXPECT_EQ(5, oTime.GetMilliSecond());
    EXPECT_TRUE(oTime.IsTimeValid());
}

} // namespace
