#include "config/KorOptionExchange.h"

#include "config/KorIniFile.h"
#include "tests/config/OptionExchangeTest.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>

namespace
{

// Looking up.

TEST_F(KorOptionExchange, SectionsAreListedAscendingByBytes)
{
    WriteFile(m_strFile, "top=1\n[b]\n[A]\nx=1\n[a]\n[b]\n");
    m_oFile.SetCasesensitiv(true);
    EXPECT_EQ((Texts{"A", "a", "b"}), Exchange(&m_oFile, false).Sections());
}

TEST_F(KorOptionExchange, WithoutTheCaseRuleASectionIsListedAsFirstWritten)
{
    WriteFile(m_strFile, "[b]\n[A]\n[a]\n# c\n");
    EXPECT_EQ((Texts{"A", "b"}), Exchange(&m_oFile, false).Sections());
}

TEST_F(KorOptionExchange, OptionsAreListedAscendingByBytes)
{
    WriteFile(m_strFile, "t=0\n[S]\nb=1\n# c\nB=2\nA=3\nwhat\n[T]\nz=4\n");
    EXPECT_EQ((Texts{"A", "b"}), Exchange(&m_oFile, false).Options("s"));
    EXPECT_EQ((Texts{"t"}), Exchange(&m_oFile, false).Options(""));
    EXPECT_EQ(Texts{}, Exchange(&m_oFile, false).Options("none"));
    m_oFile.SetCasesensitiv(true);
    EXPECT_EQ((Texts{"A", "B", "b"}), Exchange(&m_oFile, false).Options("S"));
    EXPECT_EQ(Texts{}, Exchange(&m_oFile, false).Options("s"));
}

TEST_F(KorOptionExchange, AListMayGiveTheNameOfTheSectionThatReplacesIt)
{
    WriteFile(m_strFile, "[S]\na=1\nb=2\n");
    Texts vecNames{"S"};
    Exchange(&m_oFile, false).GetOptions(vecNames[0].c_str(), vecNames);
    EXPECT_EQ((Texts{"a", "b"}), vecNames);
}

TEST_F(KorOptionExchange, AnEmptyFileHasNothing)
{
    WriteFile(m_strFile, "");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(Texts{}, oExchange.Sections());
    EXPECT_EQ("none", oExchange.Value("", "x"));
    EXPECT_EQ("none", oExchange.Value("", nullptr));
}

TEST_F(KorOptionExchange, AMissingFileHasNothing)
{
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(Texts{}, oExchange.Sections());
    EXPECT_EQ("none", oExchange.Value("S", "x"));
}

TEST_F(KorOptionExchange, WithoutOptionNameTheFirstLineOfTheSectionIsFound)
{
    WriteFile(m_strFile, "x=1\n[A]\ny=2\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("", oExchange.Value("A", nullptr));
    EXPECT_EQ("", oExchange.Value("A", ""));
    EXPECT_EQ("1", oExchange.Value("", nullptr));
    EXPECT_EQ("none", oExchange.Value("B", nullptr));
    EXPECT_EQ(oExchange.m_apOptionLines.begin() + 1, oExchange.FindOption("a", nullptr));
    EXPECT_EQ(oExchange.m_apOptionLines.end(), oExchange.FindOption("B", nullptr));
}

TEST_F(KorOptionExchange, ANullSectionReadsAsTheEmptyOne)
{
    WriteFile(m_strFile, "x=1\n[A]\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("1", oExchange.Value(nullptr, "x"));
    EXPECT_EQ(Texts{"x"}, oExchange.Options(nullptr));
    oExchange.SetOptionString(nullptr, "x", nullptr);
    EXPECT_EQ("", oExchange.Value("", "x"));
    oExchange.RemoveOption(nullptr, nullptr);
    EXPECT_EQ("none", oExchange.Value("", "x"));
}

TEST_F(KorOptionExchange, NamesCompareWithoutRegardToTheCaseOfAsciiLettersOnly)
{
    WriteFile(m_strFile, "[\xC4z]\nK@y=1\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("1", oExchange.Value("\xC4Z", "k@Y"));
    EXPECT_EQ("none", oExchange.Value("\xE4z", "K@y"));
    EXPECT_EQ("none", oExchange.Value("\xC4z", "K`y"));
}

TEST_F(KorOptionExchange, TheCaseRuleIsAskedAtEveryLookUp)
{
    WriteFile(m_strFile, "[A]\nx=1\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("1", oExchange.Value("a", "X"));
    m_oFile.SetCasesensitiv(true);
    EXPECT_EQ("none", oExchange.Value("a", "x"));
    EXPECT_EQ("none", oExchange.Value("A", "X"));
    EXPECT_EQ("1", oExchange.Value("A", "x"));
}

// Unusual files.

TEST_F(KorOptionExchange, CarriageReturnsStayInCommentAndVerbatimLinesOnly)
{
    EXPECT_EQ("# c\r\nwhat\r\n\n[A]  \nx=1 \ny=2 # d\r\n\n[B] # e\r \n",
              Rewritten("# c\r\nwhat\r\n\r\n[A]\r\nx=1\r\ny=2 # d\r\n[B] # e\r\n"));
}

TEST_F(KorOptionExchange, TheLastLineNeedsNoLineFeed)
{
    EXPECT_EQ("a=1 \nb=2 \n", Rewritten("a=1\nb=2"));
    EXPECT_EQ("a=1 \n", Rewritten("a=1\n\n \t"));
}

TEST_F(KorOptionExchange, NulBytesAreBytesLikeAnyOther)
{
    EXPECT_EQ("\0a=\0b\0 #\0c\n\n[S\0T]  \n\0\n\0 v\n"s,
              Rewritten("\0a = \0b\0 #\0c\n[S\0T]\n\0\n\0 v\n"s));

    // No name that differs behind a NUL byte is a repetition.
    EXPECT_EQ("\n[S\0T]  \n\n[S\0U]  \na\0b=1 \na\0c=2 \n## COMMENTED ## A\0B=3 \n"s,
              Rewritten("[S\0T]\n[S\0U]\na\0b=1\na\0c=2\nA\0B=3\n"s));
}

TEST_F(KorOptionExchange, EveryByteSurvivesARewrite)
{
    std::string strComment = "#";
    std::string strValue;
    for (int i = 0; i < 256; ++i) {
        if (i != '\n')
            strComment += static_cast<char>(i);
        if (i != '\n' && i != '#')
            strValue += static_cast<char>(i);
    }
    strValue = "x=\"" + strValue + "\" ";
    EXPECT_EQ(strComment + "\n" + strValue + "\n", Rewritten(strComment + "\n" + strValue));
}

TEST_F(KorOptionExchange, LinesOfAnyLengthAreReadWhole)
{
    for (const size_t nLength : {1022U, 1023U, 1024U, 1025U, 100000U}) {
        const std::string strValue(nLength, 'v');
        WriteFile(m_strFile, "a=" + strValue + "\nb=2\n");
        Exchange oExchange(&m_oFile, false);
        EXPECT_EQ(strValue, oExchange.Value("", "a"));
        EXPECT_EQ("2", oExchange.Value("", "b"));
    }
}

TEST_F(KorOptionExchange, ADirectoryIsEmpty)
{
    CKorIniFile oDirectory(m_oDir.Path().c_str(), MODE);
    Exchange oExchange(&oDirectory, true);
    EXPECT_TRUE(oExchange.m_apOptionLines.empty());
    oExchange.SetOptionString("S", "a", "1");
    oExchange.WriteIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
}

TEST_F(KorOptionExchange, AFileThatCannotBeReadIsEmpty)
{
    // Opens, and fails at the first read: nothing is mapped at address 0.
    CKorIniFile oMemory("/proc/self/mem", MODE);
    EXPECT_TRUE(Exchange(&oMemory, false).m_apOptionLines.empty());
}

} // namespace
