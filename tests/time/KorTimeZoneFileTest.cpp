#include "tests/support/ScratchDir.h"
#include "tests/time/InstantSupport.h"
#include "tests/time/ZoneFile.h"
#include "time/KorTimeZone.h"

#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>

namespace
{

class KorTimeZoneFile : public testing::Test
{
protected:
    /// Loads a content; a refused one must leave the zone as it was.
    bool Load(const std::string& strContent)
    {
        WriteFile(m_oDir.File("zone"), strContent);
        CKorTimeZone oZone;
        EXPECT_TRUE(oZone.Load("KEEP-3"));
        const bool bLoaded = oZone.Load(m_oDir.File("zone").c_str());
        if (!bLoaded)
            EXPECT_EQ("KEEP", oZone.GetAbbreviation(TimeOfUnix(0)));
        else
            m_oZone = oZone;
        return bLoaded;
    }
    bool Load(const ZoneFile& oFile) { return Load(oFile.Content()); }
    int OffsetAt(std::int64_t nSeconds) const { return m_oZone.GetOffset(TimeOfUnix(nSeconds)); }

    ScratchDir m_oDir;
    ZoneFile m_oFile;
    CKorTimeZone m_oZone;
};

TEST_F(KorTimeZoneFile, IsReadInEachVersion)
{
    for (const char cVersion : {'\0', '2', '3', '4'}) {
        m_oFile.cVersion = cVersion;
        ASSERT_TRUE(Load(m_oFile)) << cVersion;
        EXPECT_EQ(3600, OffsetAt(-1001));
        EXPECT_EQ(7200, OffsetAt(-1000));
        EXPECT_EQ(7200, OffsetAt(999));
        EXPECT_EQ(3600, OffsetAt(1000));
        EXPECT_TRUE(m_oZone.IsSummerTime(TimeOfUnix(0)));
        EXPECT_EQ("DST", m_oZone.GetAbbreviation(TimeOfUnix(0)));
        EXPECT_EQ("STD", m_oZone.GetAbbreviation(TimeOfUnix(1000)));
    }
}

TEST_F(KorTimeZoneFile, HasTheFirstTypeBeforeTheFirstChange)
{
    m_oFile.vecTypes = {{-600, 1, 4}, {3600, 0, 0}};
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(-600, OffsetAt(-1001));
    EXPECT_TRUE(m_oZone.IsSummerTime(TimeOfTicks(std::numeric_limits<std::int64_t>::min())));
}

TEST_F(KorTimeZoneFile, KeepsTheLastTypeWhenItHasNoRule)
{
    m_oFile.strFooter = "\n\n";
    m_oFile.vecChanges = {{0, 1}};
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(7200, OffsetAt(0));
    EXPECT_EQ(7200, m_oZone.GetOffset(TimeOfTicks(std::numeric_limits<std::int64_t>::max())));
}

TEST_F(KorTimeZoneFile, FollowsItsRuleFromTheLastChangeOn)
{
    m_oFile.strFooter = "\nABC-5\n";
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(7200, OffsetAt(999));
    EXPECT_EQ(18000, OffsetAt(1000));
    EXPECT_EQ("ABC", m_oZone.GetAbbreviation(TimeOfUnix(4000000000)));
    m_oFile.strFooter = "\nABC-5DEF,0,365/25\n"; // summer time all year long
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(21600, OffsetAt(1000));
}

TEST_F(KorTimeZoneFile, FollowsItsRuleAtAnyTimeWhenItHasNoChanges)
{
    m_oFile.vecChanges.clear();
    m_oFile.strFooter = "\nABC-5\n";
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(18000, OffsetAt(0));
    EXPECT_EQ(18000, m_oZone.GetOffset(TimeOfTicks(std::numeric_limits<std::int64_t>::min())));
    m_oFile.strFooter = "\n\n";
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(3600, OffsetAt(0));
}

TEST_F(KorTimeZoneFile, MayHaveChangesFarBeyondAnyInstant)
{
    constexpr auto MIN = std::numeric_limits<std::int64_t>::min();
    constexpr auto MAX = std::numeric_limits<std::int64_t>::max();
    m_oFile.strFooter = "\nABC-5DEF,M3.5.0,M10.5.0\n";
    m_oFile.vecChanges = {{MIN, 1}};
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(18000, OffsetAt(0));
    EXPECT_EQ(21600, OffsetAt(15000000));
    CKorTimeZone oRule;
    ASSERT_TRUE(oRule.Load("ABC-5DEF,M3.5.0,M10.5.0"));
    for (std::int64_t nSeconds = -150000000000; nSeconds < 30000000000; nSeconds += 1000000007)
        EXPECT_EQ(oRule.GetOffset(TimeOfUnix(nSeconds)), OffsetAt(nSeconds)) << nSeconds;
    m_oFile.vecChanges = {{MIN, 1}, {0, 0}, {MAX, 0}};
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(7200, OffsetAt(-1));
    EXPECT_EQ(3600, OffsetAt(15000000));
    EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, m_oZone.GetKind(2147483647, 12, 31, 23, 59, 59));
    EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, m_oZone.GetKind(-2147483647, 1, 1, 0, 0, 0));
}

TEST_F(KorTimeZoneFile, MayHaveOffsetsOfAnySize)
{
    m_oFile.strFooter = "\n\n";
    m_oFile.vecTypes = {{-2147483647, 0, 0}, {2147483647, 1, 4}};
    m_oFile.vecChanges = {{0, 1}};
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(2147483647, OffsetAt(0));
    EXPECT_EQ(CKorTimeZone::KIND_NEVER, m_oZone.GetKind(1970, 1, 1, 0, 0, 0));
    EXPECT_EQ(TimeOfUnix(-2147483647), m_oZone.ToUtc(1970, 1, 1, 0, 0, 0));
    EXPECT_EQ(TimeOfUnix(2147483647),
              m_oZone.ToUtc(1970, 1, 1, 0, 0, 0, CKorTimeZone::CHOICE_LATER));
}

TEST_F(KorTimeZoneFile, MayPutTheClockForwardAndBackWithinSeconds)
{
    m_oFile.vecTypes = {{0, 0, 0}, {7200, 1, 4}, {-5, 0, 0}};
    m_oFile.vecChanges = {{0, 1}, {10, 2}};
    ASSERT_TRUE(Load(m_oFile));
    // No clock shows three seconds past midnight: the gap is that of the first change.
    EXPECT_EQ(CKorTimeZone::KIND_NEVER, m_oZone.GetKind(1970, 1, 1, 0, 0, 3));
    EXPECT_EQ(TimeOfUnix(3 - 7200), m_oZone.ToUtc(1970, 1, 1, 0, 0, 3));
    EXPECT_EQ(TimeOfUnix(3), m_oZone.ToUtc(1970, 1, 1, 0, 0, 3, CKorTimeZone::CHOICE_LATER));
}

TEST_F(KorTimeZoneFile, MayHaveUpTo256Types)
{
    while (m_oFile.vecTypes.size() < 256)
        m_oFile.vecTypes.push_back({static_cast<std::int32_t>(m_oFile.vecTypes.size()), 0, 0});
    m_oFile.vecChanges = {{-1000, 255}, {1000, 128}};
    m_oFile.strFooter = "\n\n";
    ASSERT_TRUE(Load(m_oFile));
    EXPECT_EQ(255, OffsetAt(0));
    EXPECT_EQ(128, OffsetAt(1000));
    m_oFile.vecTypes.push_back({0, 0, 0});
    EXPECT_FALSE(Load(m_oFile));
}

TEST_F(KorTimeZoneFile, IsRefusedWhenItIsCutAnywhere)
{
    for (const char cVersion : {'\0', '2', '4'}) {
        m_oFile.cVersion = cVersion;
        m_oFile.strStandardFlags = std::string("\0\1", 2);
        m_oFile.strUtFlags = std::string("\0\1", 2);
        const std::string strContent = m_oFile.Content();
        for (std::size_t nLength = 0; nLength < strContent.size(); ++nLength)
            EXPECT_FALSE(Load(strContent.substr(0, nLength))) << nLength;
        EXPECT_TRUE(Load(strContent));
    }
}

TEST_F(KorTimeZoneFile, IsRefusedWithTextBehindItsEnd)
{
    EXPECT_FALSE(Load(m_oFile.Content() + "x"));
    EXPECT_FALSE(Load(m_oFile.Content() + "\n"));
    EXPECT_FALSE(Load(m_oFile.Content() + std::string(1, '\0')));
    m_oFile.cVersion = '\0';
    EXPECT_FALSE(Load(m_oFile.Content() + "\n"));
    EXPECT_FALSE(Load(m_oFile.Content() + m_oFile.strFooter));
}

TEST_F(KorTimeZoneFile, IsRefusedWithAnotherMagicOrVersion)
{
    for (const char cVersion : {'\1', '0', '1', '5', 'x', '\xFF'}) {
        m_oFile.cVersion = cVersion;
        EXPECT_FALSE(Load(m_oFile)) << cVersion;
    }
    m_oFile.cVersion = '2';
    for (const std::size_t nAt : {0, 3, 51, 54}) { // in the first header and in the second one
        std::string strContent = m_oFile.Content();
        strContent[nAt] ^= 1;
        EXPECT_FALSE(Load(strContent)) << nAt;
    }
    std::string strContent = m_oFile.Content();
    strContent[55] = '3';
    EXPECT_FALSE(Load(strContent));
}

TEST_F(KorTimeZoneFile, IsRefusedWithCountsOutOfBounds)
{
    const std::string strContent = m_oFile.Content();
    for (std::size_t nCount = 0; nCount < 6; ++nCount) {
        for (const char cHighByte : {'\1', '\x7F', '\xFF'}) {
            for (const std::size_t nHeader : {0, 51}) {
                std::string strDamaged = strContent;
                strDamaged[nHeader + 20 + 4 * nCount] = cHighByte;
                EXPECT_FALSE(Load(strDamaged)) << nHeader << " " << nCount;
            }
        }
    }
    ZoneFile oFile = m_oFile;
    oFile.vecTypes.clear();
    oFile.vecChanges.clear();
    EXPECT_FALSE(Load(oFile));
    oFile = m_oFile;
    oFile.strStandardFlags = std::string(1, '\0');
    EXPECT_FALSE(Load(oFile));
    oFile = m_oFile;
    oFile.strStandardFlags = std::string(2, '\1');
    oFile.strUtFlags = std::string(3, '\0');
    EXPECT_FALSE(Load(oFile));
}

TEST_F(KorTimeZoneFile, IsRefusedWithIndicesOutOfBounds)
{
    ZoneFile oFile = m_oFile;
    oFile.vecChanges[1].second = 2;
    EXPECT_FALSE(Load(oFile));
    oFile = m_oFile;
    oFile.vecTypes[1].nAbbreviation = 8;
    EXPECT_FALSE(Load(oFile));
    oFile.vecTypes[1].nAbbreviation = 7;
    EXPECT_TRUE(Load(oFile));
    EXPECT_EQ("", m_oZone.GetAbbreviation(TimeOfUnix(0)));
}

TEST_F(KorTimeZoneFile, IsRefusedWithAnAbbreviationThatDoesNotEnd)
{
    m_oFile.strNames = std::string("STD\0DST", 7);
    EXPECT_FALSE(Load(m_oFile));
    m_oFile.strNames = "";
    EXPECT_FALSE(Load(m_oFile));
}

TEST_F(KorTimeZoneFile, IsRefusedWithChangesThatDoNotAscend)
{
    m_oFile.vecChanges = {{1000, 1}, {1000, 0}};
    EXPECT_FALSE(Load(m_oFile));
    m_oFile.vecChanges = {{1000, 1}, {-1000, 0}};
    EXPECT_FALSE(Load(m_oFile));
}

TEST_F(KorTimeZoneFile, IsRefusedWithFlagsThatAreNone)
{
    ZoneFile oFile = m_oFile;
    oFile.vecTypes[0].nSummerTime = 2;
    EXPECT_FALSE(Load(oFile));
    oFile = m_oFile;
    oFile.strStandardFlags = "\2\1";
    EXPECT_FALSE(Load(oFile));
    oFile.strStandardFlags = std::string("\0\1", 2);
    oFile.strUtFlags = std::string("\0\1", 2);
    EXPECT_TRUE(Load(oFile));
    oFile.strUtFlags = std::string("\0\2", 2);
    EXPECT_FALSE(Load(oFile));
    oFile.strUtFlags = std::string("\1\0", 2); // universal time that is not standard time
    EXPECT_FALSE(Load(oFile));
}

TEST_F(KorTimeZoneFile, IsRefusedWithAnOffsetThatHasNoNegative)
{
    m_oFile.vecTypes[0].nOffset = std::numeric_limits<std::int32_t>::min();
    EXPECT_FALSE(Load(m_oFile));
}

TEST_F(KorTimeZoneFile, IsRefusedWithLeapSeconds)
{
    m_oFile.strLeapSeconds = ZoneFile::Number(78796800, 8) + ZoneFile::Number(1, 4);
    EXPECT_FALSE(Load(m_oFile));
    EXPECT_FALSE(m_oZone.Load("right/Europe/Berlin"));
}

TEST_F(KorTimeZoneFile, IsRefusedWithARuleThatIsNone)
{
    for (const char* pszFooter :
         {"\nSTD\n", "\nSTD-25\n", "\nSTD-1DST,M13.1.0,M3.1.0\n", "\nSTD-1 \n", "STD-1\n",
          "\nSTD-1", "\nSTD-1\r\n", "\n:STD-1\n", "\nEurope/Berlin\n", " \nSTD-1\n", ""}) {
        m_oFile.strFooter = pszFooter;
        EXPECT_FALSE(Load(m_oFile)) << pszFooter;
    }
    m_oFile.strFooter = std::string("\nSTD-1\0\n", 8);
    EXPECT_FALSE(Load(m_oFile));
}

TEST_F(KorTimeZoneFile, IsReadWhateverTheBlockOfVersion1Says)
{
    // Of the same lengths as another one, but with changes that do not ascend.
    ZoneFile oFirst = m_oFile;
    oFirst.vecChanges = {{5, 7}, {5, 7}};
    const std::string strContent = oFirst.Block(4) + m_oFile.Block(8) + m_oFile.strFooter;
    ASSERT_TRUE(Load(strContent));
    EXPECT_EQ(7200, OffsetAt(0));
}

TEST_F(KorTimeZoneFile, IsNothingThatIsNotAZoneFile)
{
    EXPECT_FALSE(Load(std::string()));
    EXPECT_FALSE(Load(std::string("TZif")));
    EXPECT_FALSE(Load(std::string("CET-1\n")));
    EXPECT_FALSE(Load(std::string(2 << 20, 'T')));
}

TEST_F(KorTimeZoneFile, MustBeARegularFileAndIsNeverWaitedFor)
{
    const std::string strPipe = m_oDir.File("pipe");
    ASSERT_EQ(0, mkfifo(strPipe.c_str(), 0600));
    CKorTimeZone oZone;
    EXPECT_FALSE(oZone.Load(strPipe.c_str()));
    EXPECT_FALSE(oZone.Load(m_oDir.Path().c_str()));
    EXPECT_FALSE(oZone.Load("/dev/zero"));
    EXPECT_FALSE(oZone.Load("/dev/tty"));
    EXPECT_FALSE(oZone.Load(m_oDir.File("none").c_str()));
}

TEST_F(KorTimeZoneFile, SurvivesRandomDamage)
{
    RandomTicks oRandom;
    m_oFile.strStandardFlags = std::string("\0\1", 2);
    m_oFile.strFooter = "\nABC-5DEF,M3.5.0,M10.5.0\n";
    const std::string strContent = m_oFile.Content();
    for (int i = 0; i < 300; ++i) {
        std::string strDamaged = strContent;
        for (std::int64_t n = oRandom.Next(1, 3); n > 0; --n) {
            const auto nAt = oRandom.Next(0, static_cast<std::int64_t>(strContent.size()) - 1);
            strDamaged[static_cast<std::size_t>(nAt)] = static_cast<char>(oRandom.Next(0, 255));
        }
        if (!Load(strDamaged))
            continue;
        const CKorUTCTime oTime = TimeOfTicks(oRandom.Next());
        EXPECT_NE(std::numeric_limits<int>::min(), m_oZone.GetOffset(oTime));
        EXPECT_LE(m_oZone.ToUtc(1970, 1, 1, 0, 0, 0),
                  m_oZone.ToUtc(1970, 1, 1, 0, 0, 0, CKorTimeZone::CHOICE_LATER));
    }
}

} // namespace
