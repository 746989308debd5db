#include "config/KorOptionExchange.h"

#include "config/KorIniFile.h"
#include "tests/support/ScratchDir.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

/// What a program adds for a type of its own.
template <>
void IOX_Std<int>(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
                  int& nValue, const int& nDefault)
{
    std::string strValue = std::to_string(nValue);
    IOX_Std<std::string>(pExchange, pszSection, pszOption, strValue, std::to_string(nDefault));
    if (!pExchange->IsWriteBack())
        nValue = std::atoi(strValue.c_str());
}

namespace
{

using Texts = std::vector<std::string>;
using namespace std::string_literals;

struct Exchange : CKorIniOptionExchange
{
    using CKorIniOptionExchange::CKorIniOptionExchange;
    using CKorIniOptionExchange::m_apOptionLines;
    using CKorIniOptionExchange::m_bModified;

    /// The value, or "none".
    std::string Value(const char* pszSection, const char* pszOption)
    {
        std::string strValue = "none";
        GetOptionString(pszSection, pszOption, strValue);
        return strValue;
    }
    Texts Sections()
    {
        Texts vecSections{"old"};
        GetSections(vecSections);
        return vecSections;
    }
    Texts Options(const char* pszSection)
    {
        Texts vecOptions{"old"};
        GetOptions(pszSection, vecOptions);
        return vecOptions;
    }
    /// The text of every line, in order.
    Texts Lines() const
    {
        Texts vecLines;
        for (const SOptionLine* pLine : m_apOptionLines)
            vecLines.push_back(CreateIniLine(*pLine));
        return vecLines;
    }
    /// The section of every line, in order.
    Texts LineSections() const
    {
        Texts vecSections;
        for (const SOptionLine* pLine : m_apOptionLines)
            vecSections.push_back(pLine->m_strSection);
        return vecSections;
    }
};

class KorOptionExchange : public testing::Test
{
protected:
    KorOptionExchange() : m_strFile(m_oDir.File("test.ini")), m_oFile(m_strFile.c_str(), MODE) {}

    /// What a rewrite makes of a file.
    std::string Rewritten(const std::string& strContent)
    {
        WriteFile(m_strFile, strContent);
        Exchange(&m_oFile, false).WriteIniOptions();
        return ReadFile(m_strFile);
    }

    /// What a file becomes when an option is set in it.
    std::string AfterSetting(const std::string& strContent, const char* pszSection,
                             const char* pszOption, const char* pszValue)
    {
        WriteFile(m_strFile, strContent);
        Exchange(&m_oFile, true).SetOptionString(pszSection, pszOption, pszValue);
        return ReadFile(m_strFile);
    }

    static constexpr CKorIniFile::EPathMode MODE = CKorIniFile::PATH_UNCHANGED;
    ScratchDir m_oDir;
    const std::string m_strFile;
    CKorIniFile m_oFile;
};

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

// Editing.

TEST_F(KorOptionExchange, AnExistingOptionKeepsItsCommentAndPlace)
{
    EXPECT_EQ("a=0 \nport=2 # serial\nb=0 \n",
              AfterSetting("a=0\nport=1 # serial\nb=0\n", "", "port", "2"));
}

TEST_F(KorOptionExchange, NewOptionsGoToTheTopOfTheirSection)
{
    WriteFile(m_strFile, "[S]\nx=1\n[T]\n");
    {
        Exchange oExchange(&m_oFile, true);
        oExchange.SetOptionString("S", "a", "2");
        oExchange.SetOptionString("s", "b", "3");
    }
    EXPECT_EQ("\n[S]  \nb=3 \na=2 \nx=1 \n\n[T]  \n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, ANewSectionIsAppended)
{
    EXPECT_EQ("x=1 \n\n[N] \na=2 \n", AfterSetting("x=1\n", "N", "a", "2"));
    EXPECT_EQ("\n[N] \na=2 \n", AfterSetting("", "N", "a", "2"));
    EXPECT_EQ("\n[A]  \n\n[] \na=2 \n", AfterSetting("[A]\n", "", "a", "2"));
}

TEST_F(KorOptionExchange, ANewOptionBeforeTheFirstHeaderFollowsTheFirstLine)
{
    EXPECT_EQ("# c\na=2 \nx=1 \n\n[S]  \n", AfterSetting("# c\nx=1\n[S]\n", "", "a", "2"));
}

TEST_F(KorOptionExchange, AValueIsStoredAsItIs)
{
    EXPECT_EQ("a= two words  \n", AfterSetting("a=1\n", "", "a", " two words "));
}

TEST_F(KorOptionExchange, SettingTheSameValueCountsAsAChange)
{
    WriteFile(m_strFile, "a=1\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_FALSE(oExchange.m_bModified);
    oExchange.SetOptionString("", "a", "1");
    EXPECT_TRUE(oExchange.m_bModified);
    oExchange.ReadIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
}

TEST_F(KorOptionExchange, RemovingTakesOneLineOut)
{
    WriteFile(m_strFile, "[A]\nx=1\ny=2\n");
    Exchange oExchange(&m_oFile, false);
    oExchange.RemoveOption("a", "X");
    oExchange.RemoveOption("a", "none");
    oExchange.RemoveOption("none", "y");
    EXPECT_EQ((Texts{"[A]  ", "y=2 "}), oExchange.Lines());
    EXPECT_FALSE(oExchange.m_bModified);
}

TEST_F(KorOptionExchange, RemovingWithoutOptionNameTakesTheHeaderOut)
{
    WriteFile(m_strFile, "[A]\nx=1\n[B]\ny=2\n");
    Exchange oExchange(&m_oFile, false);
    oExchange.RemoveOption("B", nullptr);
    EXPECT_EQ((Texts{"[A]  ", "x=1 ", "y=2 "}), oExchange.Lines());
    oExchange.RemoveOption("A", "");
    EXPECT_EQ((Texts{"x=1 ", "y=2 "}), oExchange.Lines());
}

// Writing.

TEST_F(KorOptionExchange, AFileIsWrittenInNormalSpacing)
{
    EXPECT_EQ("# top\nkey=value \nlast=1 # c\n\n[Net]  \nwhat # d\n\n[B] #e \n",
              Rewritten("\n# top\n  key = value\nlast=1 # c\n\n\n[Net]\n  what # d\n[B]#e\n"));
}

TEST_F(KorOptionExchange, AFileWithoutHeadersKeepsItsLines)
{
    EXPECT_EQ("a=1 \n# c\nb=2 \n", Rewritten("a=1\n\n# c\n\nb=2\n"));
}

TEST_F(KorOptionExchange, ARewriteIsReadBackAsTheSameDocument)
{
    // A header gains a blank with each rewrite; everything else has its final form.
    const std::string strOnce = Rewritten("# c\nk=v\nwhat\nk=w\n");
    EXPECT_EQ(strOnce, Rewritten(strOnce));
    EXPECT_EQ("\n[A]  \n", Rewritten("\n[A]  \n"));
    EXPECT_EQ("\n[A] #c  \n", Rewritten("\n[A] #c \n"));
}

TEST_F(KorOptionExchange, AnExchangeForReadingNeverWrites)
{
    WriteFile(m_strFile, "a = 1\n");
    Exchange(&m_oFile, false).SetOptionString("", "a", "2");
    EXPECT_EQ("a = 1\n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, ARemovalAloneIsNotWritten)
{
    WriteFile(m_strFile, "a = 1\n");
    Exchange(&m_oFile, true).RemoveOption("", "a");
    EXPECT_EQ("a = 1\n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, ARemovalIsWrittenAlongWithASetting)
{
    WriteFile(m_strFile, "a=1\nb=2\n");
    {
        Exchange oExchange(&m_oFile, true);
        oExchange.RemoveOption("", "a");
        oExchange.SetOptionString("", "b", "3");
    }
    EXPECT_EQ("b=3 \n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, IsUnmodifiedAfterWritingEvenWhereThatFailed)
{
    CKorIniFile oNowhere(m_oDir.File("none/test.ini").c_str(), MODE);
    Exchange oExchange(&oNowhere, true);
    oExchange.SetOptionString("S", "a", "1");
    oExchange.WriteIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
    EXPECT_EQ("1", oExchange.Value("S", "a"));
}

TEST_F(KorOptionExchange, AFullDeviceIsNoError)
{
    struct : CKorIniFile
    {
        using CKorIniFile::m_strIniFileName;
    } oFull;
    Exchange oExchange(&oFull, true);
    oExchange.SetOptionString("S", "a", "1");
    oFull.m_strIniFileName = "/dev/full";
    oExchange.WriteIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
    EXPECT_EQ("1", oExchange.Value("S", "a"));
}

TEST_F(KorOptionExchange, WithoutAFileNothingIsReadOrWritten)
{
    Exchange oExchange;
    oExchange.SetOptionString("S", "a", "1");
    oExchange.SetOptionString("s", "A", "2");
    EXPECT_EQ((Texts{"[S] ", "a=2 "}), oExchange.Lines());
    oExchange.WriteIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
    oExchange.ReadIniOptions();
    EXPECT_TRUE(oExchange.m_apOptionLines.empty());
}

TEST_F(KorOptionExchange, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<CKorIniOptionExchange>);
    EXPECT_FALSE(std::is_copy_assignable_v<CKorIniOptionExchange>);
}

// Exchanging options with variables.

TEST_F(KorOptionExchange, AStringWithAZeroByteIsWrittenWhole)
{
    WriteFile(m_strFile, "[S]\na=x\0y\n"s);
    std::string strValue;
    {
        Exchange oReading(&m_oFile, false);
        IOX_Std<std::string>(&oReading, "S", "a", strValue, "");
    }
    EXPECT_EQ("x\0y"s, strValue);
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<std::string>(&oWriting, "S", "a", strValue, "");
    }
    EXPECT_EQ("\n[S]  \na=x\0y \n"s, ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, AWrittenTextWithWhiteSpaceIsQuotedAndReadBackWithout)
{
    std::string strValue = "two words";
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<std::string>(&oWriting, "S", "a", strValue, "");
    }
    EXPECT_EQ("\n[S] \na=\"two words\" \n", ReadFile(m_strFile));
    EXPECT_EQ("\"two words\"", strValue);

    Exchange oReading(&m_oFile, false);
    IOX_Std<std::string>(&oReading, "S", "a", strValue, "");
    EXPECT_EQ("two words", strValue);
}

TEST_F(KorOptionExchange, AWrittenTextWithoutWhiteSpaceLosesItsQuotes)
{
    std::string strValue = "\"word\"";
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<std::string>(&oWriting, "S", "a", strValue, "");
    }
    EXPECT_EQ("\n[S] \na=word \n", ReadFile(m_strFile));
    EXPECT_EQ("word", strValue);
}

TEST_F(KorOptionExchange, AMissingTextReadsAsTheDefaultWithoutQuotes)
{
    Exchange oReading(&m_oFile, false);
    std::string strValue = "old";
    IOX_Std<std::string>(&oReading, "S", "a", strValue, "\"de fault\"");
    EXPECT_EQ("de fault", strValue);
    IOX_Std<std::string>(&oReading, "S", "a", strValue, strValue);
    EXPECT_EQ("de fault", strValue);
}

TEST_F(KorOptionExchange, ATextInABufferIsReadIntoIt)
{
    WriteFile(m_strFile, "a=\"two words\"\n");
    Exchange oReading(&m_oFile, false);
    char szBuffer[16];
    char szDefault[] = "\"none\"";
    char* pszValue = szBuffer;
    IOX_Std<char*>(&oReading, "", "a", pszValue, szDefault);
    EXPECT_STREQ("two words", szBuffer);
    IOX_Std<char*>(&oReading, "", "b", pszValue, szDefault);
    EXPECT_STREQ("none", szBuffer);
    IOX_Std<char*>(&oReading, "", "b", pszValue, nullptr);
    EXPECT_STREQ("", szBuffer);
    EXPECT_EQ(szBuffer, pszValue);
}

TEST_F(KorOptionExchange, WritingLeavesTheBufferUnchanged)
{
    char szBuffer[] = "two words";
    char* pszValue = szBuffer;
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<char*>(&oWriting, "S", "a", pszValue, nullptr);
    }
    EXPECT_EQ("\n[S] \na=\"two words\" \n", ReadFile(m_strFile));
    EXPECT_STREQ("two words", szBuffer);
}

TEST_F(KorOptionExchange, WithoutABufferAnEmptyTextIsWritten)
{
    char* pszValue = nullptr;
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<char*>(&oWriting, "S", "a", pszValue, nullptr);
    }
    EXPECT_EQ("\n[S] \na= \n", ReadFile(m_strFile));
    Exchange oReading(&m_oFile, false);
    IOX_Std<char*>(&oReading, "S", "a", pszValue, nullptr);
    EXPECT_EQ(nullptr, pszValue);
}

TEST_F(KorOptionExchange, AProgramAddsTypesOfItsOwn)
{
    int nValue = 4711;
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std(&oWriting, "S", "n", nValue, 0);
    }
    EXPECT_EQ("\n[S] \nn=4711 \n", ReadFile(m_strFile));
    nValue = 0;
    Exchange oReading(&m_oFile, false);
    IOX_Std(&oReading, "S", "n", nValue, 0);
    EXPECT_EQ(4711, nValue);
    IOX_Std(&oReading, "S", "m", nValue, -1);
    EXPECT_EQ(-1, nValue);
}

} // namespace
