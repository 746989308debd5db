#include "config/KorOptionExchange.h"

#include "tests/config/OptionExchangeTest.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <memory>

namespace
{

// Reading single lines.

TEST_F(KorOptionExchange, FurtherAssignmentSignsBelongToTheValue)
{
    WriteFile(m_strFile, "a=1=2\n");
    EXPECT_EQ("1=2", Exchange(&m_oFile, false).Value("", "a"));
}

TEST_F(KorOptionExchange, ALineWithoutAnOptionNameIsKeptVerbatim)
{
    WriteFile(m_strFile, "=5\n=a=b\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(Texts{}, oExchange.Options(""));
    EXPECT_EQ((Texts{"=5", "=a=b"}), oExchange.Lines());
}

TEST_F(KorOptionExchange, ALineWithoutAnAssignmentIsKeptVerbatim)
{
    WriteFile(m_strFile, "a\n  a b \t# c \n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(Texts{}, oExchange.Options(""));
    EXPECT_EQ((Texts{"a", "a b \t# c "}), oExchange.Lines());
}

TEST_F(KorOptionExchange, AHashAlwaysStartsAComment)
{
    WriteFile(m_strFile, "path=/a#b\nquoted=\"x # y\"\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("/a", oExchange.Value("", "path"));
    EXPECT_EQ("\"x", oExchange.Value("", "quoted"));
    EXPECT_EQ((Texts{"path=/a #b", "quoted=\"x # y\""}), oExchange.Lines());
}

TEST_F(KorOptionExchange, ASemicolonStartsNoComment)
{
    WriteFile(m_strFile, "; text\n;key=1 ; one\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("1 ; one", oExchange.Value("", ";key"));
    EXPECT_EQ((Texts{"; text", ";key=1 ; one "}), oExchange.Lines());
}

TEST_F(KorOptionExchange, AHeaderWithoutClosingBracketNamesTheRestOfTheLine)
{
    EXPECT_EQ("\n[Net]  \n", Rewritten("[Net\n"));
    EXPECT_EQ("\n[Net ]  \n", Rewritten("[Net \n"));
    EXPECT_EQ("\n[]  \n", Rewritten("[\n"));
}

TEST_F(KorOptionExchange, TextBehindTheClosingBracketIsLost)
{
    EXPECT_EQ("\n[Net]  \n", Rewritten("[Net] junk\n"));
    EXPECT_EQ("\n[Net] # c \n", Rewritten("[Net] junk # c\n"));
    EXPECT_EQ("\n[a]  \n", Rewritten("[a]b]=1\n"));
}

TEST_F(KorOptionExchange, ASectionNameIsNotTrimmed)
{
    WriteFile(m_strFile, "  [ A ]\nx=1\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ(Texts{" A "}, oExchange.Sections());
    EXPECT_EQ("1", oExchange.Value(" A ", "x"));
}

TEST_F(KorOptionExchange, AHashEndsASectionName)
{
    EXPECT_EQ("\n[a] #b] \n", Rewritten("[a#b]\n"));
}

TEST_F(KorOptionExchange, OptionNamesAndValuesAreTrimmedAndQuotesKept)
{
    WriteFile(m_strFile, " \t key word \t = \t \"a b\" \t\nempty=\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("\"a b\"", oExchange.Value("", "key word"));
    EXPECT_EQ("", oExchange.Value("", "empty"));
}

TEST_F(KorOptionExchange, ALineKnowsItsParts)
{
    Exchange oExchange;
    std::string strSection = "S";
    const std::unique_ptr<CKorIniOptionExchange::SOptionLine> pOption(
        oExchange.CreateOptionLine(" key = value # note ", strSection));
    EXPECT_EQ("", pOption->m_strSection);
    EXPECT_EQ("key", pOption->m_strOption);
    EXPECT_EQ("value", pOption->m_strValue);
    EXPECT_EQ("# note ", pOption->m_strComment);
    EXPECT_FALSE(pOption->m_bSection);
    EXPECT_EQ("S", strSection);

    const std::unique_ptr<CKorIniOptionExchange::SOptionLine> pHeader(
        oExchange.CreateOptionLine("[Net] # note", strSection));
    EXPECT_EQ("", pHeader->m_strOption);
    EXPECT_EQ("# note ", pHeader->m_strComment);
    EXPECT_TRUE(pHeader->m_bSection);
    EXPECT_EQ("Net", strSection);
}

TEST_F(KorOptionExchange, ABlankLineIsNoLine)
{
    Exchange oExchange;
    std::string strSection = "S";
    EXPECT_EQ(nullptr, oExchange.CreateOptionLine("", strSection));
    EXPECT_EQ(nullptr, oExchange.CreateOptionLine(" \t\v\f\r", strSection));
    oExchange.AddOptionLine("  ", strSection);
    EXPECT_TRUE(oExchange.m_apOptionLines.empty());
    EXPECT_EQ("S", strSection);
}

TEST_F(KorOptionExchange, ACommentedLineIsACommentForTheNextReader)
{
    Exchange oExchange;
    CKorIniOptionExchange::SOptionLine oLine;
    oLine.m_strSection = "S";
    oLine.m_strOption = "a";
    oLine.m_strValue = "1";
    oLine.m_strComment = "# c";
    oExchange.CommentOptionLine(oLine);
    EXPECT_EQ("", oLine.m_strSection);
    EXPECT_EQ("", oLine.m_strOption);
    EXPECT_EQ("", oLine.m_strValue);
    EXPECT_EQ("## COMMENTED ## a=1 # c", oLine.m_strComment);
    EXPECT_EQ("## COMMENTED ## a=1 # c\n", Rewritten(oLine.m_strComment + "\n"));
}

// Placing lines.

TEST_F(KorOptionExchange, TheFirstOfTwoEqualOptionsWins)
{
    WriteFile(m_strFile, "[A]\nx=1\nx=2\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("1", oExchange.Value("A", "x"));
    EXPECT_EQ((Texts{"[A]  ", "x=1 ", "## COMMENTED ## x=2 "}), oExchange.Lines());
}

TEST_F(KorOptionExchange, WithoutTheCaseRuleHeadersDifferingInCaseAreRepetitions)
{
    EXPECT_EQ("\n[Net]  \n## COMMENTED ## [net]  \n", Rewritten("[Net]\n[net]\n"));
}

TEST_F(KorOptionExchange, WithTheCaseRuleHeadersDifferingInCaseAreTwoSections)
{
    m_oFile.SetCasesensitiv(true);
    EXPECT_EQ("\n[Net]  \n\n[net]  \n", Rewritten("[Net]\n[net]\n"));
}

TEST_F(KorOptionExchange, OptionsOfAReopenedSectionMoveUpInReverseOrder)
{
    WriteFile(m_strFile, "[A]\nx=1\n[B]\ny=2\n[A]\nz=3\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ((Texts{"[A]  ", "z=3 ", "x=1 ", "[B]  ", "y=2 ", "## COMMENTED ## [A]  ",
                     "## COMMENTED ## z=3 "}),
              oExchange.Lines());
    EXPECT_EQ((Texts{"A", "A", "A", "B", "B", "B", "B"}), oExchange.LineSections());
}

TEST_F(KorOptionExchange, MovedOptionsTakeTheirCommentsAlong)
{
    EXPECT_EQ("\n[A]  \nw=4 \nz=3 #c\nx=1 \n"
              "\n[B]  \n## COMMENTED ## [A]  \n## COMMENTED ## z=3 #c\n## COMMENTED ## w=4 \n"
              "# end\n",
              Rewritten("[A]\nx=1\n[B]\n[A]\nz=3#c\nw=4\n# end\n"));
}

TEST_F(KorOptionExchange, ASectionReopenedAtOnceGoesOn)
{
    EXPECT_EQ("\n[A]  \nx=1 \n## COMMENTED ## [A]  \ny=2 \n", Rewritten("[A]\nx=1\n[A]\ny=2\n"));
}

TEST_F(KorOptionExchange, ASectionReopenedAtOnceInOtherLettersMovesItsOptions)
{
    // "a" and "A" name one section here, but only "A" itself just goes on.
    EXPECT_EQ("\n[A]  \ny=2 \nx=1 \n## COMMENTED ## [a]  \n## COMMENTED ## y=2 \n",
              Rewritten("[A]\nx=1\n[a]\ny=2\n"));
}

TEST_F(KorOptionExchange, AReopenedSectionWithoutHeaderTakesOptionsBehindItsFirstLine)
{
    EXPECT_EQ("# top\ny=2 \nx=1 \n\n[A]  \n## COMMENTED ## []  \n## COMMENTED ## y=2 \n",
              Rewritten("# top\nx=1\n[A]\n[]\ny=2\n"));
}

TEST_F(KorOptionExchange, CommentsInAReopenedSectionStayWhereTheyAre)
{
    WriteFile(m_strFile, "[A]\n[B]\n[A]\n# c\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ((Texts{"[A]  ", "[B]  ", "## COMMENTED ## [A]  ", "# c"}), oExchange.Lines());
    EXPECT_EQ((Texts{"A", "B", "B", "A"}), oExchange.LineSections());
}

TEST_F(KorOptionExchange, ALineAddedByHandIsPlacedAsByReading)
{
    Exchange oExchange;
    std::string strSection;
    for (const char* pszLine : {"[A]", "x=1", "[B]", "y=2", "[A]", "z=3", "X=4"})
        oExchange.AddOptionLine(pszLine, strSection);
    EXPECT_EQ((Texts{"[A]  ", "z=3 ", "x=1 ", "[B]  ", "y=2 ", "## COMMENTED ## [A]  ",
                     "## COMMENTED ## z=3 ", "## COMMENTED ## X=4 "}),
              oExchange.Lines());
    EXPECT_EQ("A", strSection);
}

TEST_F(KorOptionExchange, AnOptionAddedToASectionWithoutLinesIsAppended)
{
    Exchange oExchange;
    std::string strSection = "A";
    oExchange.AddOptionLine("x=1", strSection);
    strSection = "B";
    oExchange.AddOptionLine("y=2", strSection);
    EXPECT_EQ((Texts{"x=1 ", "y=2 "}), oExchange.Lines());
    EXPECT_EQ("2", oExchange.Value("B", "y"));
}

} // namespace
