// Large files in the shapes that tempt a reader into searching all lines for each line. None of
// these tests looks at the clock: a reader whose time grows with the square of the lines would not
// come to an end.

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"
#include "tests/config/TestScale.h"
#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

using Texts = std::vector<std::string>;

constexpr int LINES = 1000000 / TEST_SCALE;

struct Exchange : CKorIniOptionExchange
{
    using CKorIniOptionExchange::CKorIniOptionExchange;
    using CKorIniOptionExchange::m_apOptionLines;

    /// The value, or "none".
    std::string Value(const char* pszSection, const std::string& strOption)
    {
        std::string strValue = "none";
        GetOptionString(pszSection, strOption.c_str(), strValue);
        return strValue;
    }
    size_t Sections()
    {
        Texts vecNames;
        GetSections(vecNames);
        EXPECT_TRUE(std::is_sorted(vecNames.begin(), vecNames.end()));
        return vecNames.size();
    }
    size_t Options(const char* pszSection)
    {
        Texts vecNames;
        GetOptions(pszSection, vecNames);
        EXPECT_TRUE(std::is_sorted(vecNames.begin(), vecNames.end()));
        return vecNames.size();
    }
};

std::string Numbered(const char* pszPrefix, int nNumber)
{
    return pszPrefix + std::to_string(nNumber);
}

class KorIniVolume : public testing::Test
{
protected:
    KorIniVolume() : m_oFile(m_oDir.File("test.ini").c_str(), CKorIniFile::PATH_UNCHANGED) {}

    void WriteContent() { WriteFile(m_oFile.GetIniFileName(), m_strContent); }

    static constexpr size_t COUNT = LINES;
    ScratchDir m_oDir;
    CKorIniFile m_oFile;
    std::string m_strContent;
};

TEST_F(KorIniVolume, ManyOptionsInOneSection)
{
    m_strContent = "[S]\n";
    for (int i = 0; i < LINES; ++i)
        m_strContent += Numbered("a", i) + "=" + Numbered("v", i) + "\n";
    WriteContent();
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(COUNT + 1, oExchange.m_apOptionLines.size());
    EXPECT_EQ(COUNT, oExchange.Options("S"));
    EXPECT_EQ(Numbered("v", LINES - 1), oExchange.Value("S", Numbered("A", LINES - 1)));
}

TEST_F(KorIniVolume, ManySections)
{
    for (int i = 0; i < LINES / 2; ++i)
        m_strContent += "[" + Numbered("S", i) + "]\na=" + Numbered("v", i) + "\n";
    WriteContent();
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(COUNT, oExchange.m_apOptionLines.size());
    EXPECT_EQ(COUNT / 2, oExchange.Sections());
    EXPECT_EQ(Numbered("v", LINES / 2 - 1),
              oExchange.Value(Numbered("s", LINES / 2 - 1).c_str(), "a"));
}

TEST_F(KorIniVolume, ManyDuplicates)
{
    m_strContent = "[S]\n";
    for (int i = 0; i < LINES; ++i)
        m_strContent += Numbered(i % 2 == 0 ? "a=" : "A=", i) + "\n";
    WriteContent();
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(COUNT + 1, oExchange.m_apOptionLines.size());
    EXPECT_EQ(1U, oExchange.Options("S"));
    EXPECT_EQ("0", oExchange.Value("S", "a"));
    EXPECT_EQ("## COMMENTED ## " + Numbered("A=", LINES - 1) + " ",
              oExchange.CreateIniLine(*oExchange.m_apOptionLines.back()));
}

TEST_F(KorIniVolume, SectionsOpenedAgainAndAgain)
{
    for (int i = 0; i < LINES / 4; ++i)
        m_strContent += "[A]\n" + Numbered("a", i) + "=1\n[B]\n" + Numbered("b", i) + "=2\n";
    WriteContent();
    Exchange oExchange(&m_oFile, false);
    // Only the first option of "A" and those of "B", which is the last section open, stand still.
    EXPECT_EQ(2U, oExchange.Sections());
    EXPECT_EQ(COUNT / 4, oExchange.Options("A"));
    EXPECT_EQ(COUNT / 4, oExchange.Options("B"));
    EXPECT_EQ(COUNT + COUNT / 4 - 1, oExchange.m_apOptionLines.size());
    EXPECT_EQ(Numbered("a", LINES / 4 - 1), oExchange.m_apOptionLines[1]->m_strOption);
}

TEST_F(KorIniVolume, ManyOptionsMovedUp)
{
    m_strContent = "[A]\n[B]\nx=1\n[A]\n";
    for (int i = 0; i < LINES; ++i)
        m_strContent += Numbered("a", i) + "=1\n";
    WriteContent();
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(4 + 2 * COUNT, oExchange.m_apOptionLines.size());
    EXPECT_EQ(COUNT, oExchange.Options("A"));
    EXPECT_EQ(Numbered("a", LINES - 1), oExchange.m_apOptionLines[1]->m_strOption);
    EXPECT_EQ("a0", oExchange.m_apOptionLines[COUNT]->m_strOption);
}

TEST_F(KorIniVolume, ManySectionsOpenedAgain)
{
    for (int nRound = 0; nRound < 2; ++nRound) {
        for (int i = 0; i < LINES / 4; ++i)
            m_strContent += "[" + Numbered("S", i) + "]\n" + Numbered("a", nRound) + "=1\n";
    }
    WriteContent();
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(COUNT / 4, oExchange.Sections());
    EXPECT_EQ("a1", oExchange.m_apOptionLines[1]->m_strOption);
    EXPECT_EQ("a0", oExchange.m_apOptionLines[2]->m_strOption);
}

TEST_F(KorIniVolume, ManyCommentsAndBlankLines)
{
    for (int i = 0; i < LINES / 2; ++i)
        m_strContent += "# c\n \n";
    WriteContent();
    EXPECT_EQ(COUNT / 2, Exchange(&m_oFile, false).m_apOptionLines.size());
}

TEST_F(KorIniVolume, OneLongLine)
{
    const std::string strValue(COUNT * 20, 'v');
    m_strContent = "a=" + strValue + "#" + strValue;
    WriteContent();
    EXPECT_EQ(strValue, Exchange(&m_oFile, false).Value("", "a"));
}

TEST_F(KorIniVolume, AManyLinedFileIsWrittenWhole)
{
    m_strContent = "\n[S]  \n";
    for (int i = 0; i < LINES; ++i)
        m_strContent += Numbered("a", i) + "=1 \n";
    WriteContent();
    Exchange(&m_oFile, true).SetOptionString("S", "a0", "1");
    EXPECT_TRUE(ReadFile(m_oFile.GetIniFileName()) == m_strContent);
}

} // namespace
