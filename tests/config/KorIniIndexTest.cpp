// Look-ups by name while lines are changed behind the engine's back: by a derived class, which owns
// the list of lines, and through a line that was handed out.

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"
#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

namespace
{

using Texts = std::vector<std::string>;
using SOptionLine = CKorIniOptionExchange::SOptionLine;

std::string ValueOf(CKorIniOptionExchange& oExchange, const char* pszSection, const char* pszOption)
{
    std::string strValue = "none";
    oExchange.GetOptionString(pszSection, pszOption, strValue);
    return strValue;
}

Texts OptionsOf(CKorIniOptionExchange& oExchange, const char* pszSection)
{
    Texts vecOptions;
    oExchange.GetOptions(pszSection, vecOptions);
    return vecOptions;
}

/// A document with the member operations of a program's own class.
struct Exchange : CKorIniOptionExchange
{
    using CKorIniOptionExchange::CKorIniOptionExchange;
    using CKorIniOptionExchange::m_apOptionLines;

    void Insert(int nPlace, const char* pszSection, const char* pszOption, const char* pszValue)
    {
        auto pLine = std::make_unique<SOptionLine>();
        pLine->m_strSection = pszSection;
        pLine->m_strOption = pszOption;
        pLine->m_strValue = pszValue;
        m_apOptionLines.insert(m_apOptionLines.begin() + nPlace, pLine.release());
    }
    void Erase(int nPlace)
    {
        delete m_apOptionLines[static_cast<size_t>(nPlace)];
        m_apOptionLines.erase(m_apOptionLines.begin() + nPlace);
    }
    Texts Lines() const
    {
        Texts vecLines;
        for (const SOptionLine* pLine : m_apOptionLines)
            vecLines.push_back(CreateIniLine(*pLine));
        return vecLines;
    }
};

class KorIniIndex : public testing::Test
{
protected:
    KorIniIndex()
        : m_strFile(m_oDir.File("test.ini")),
          m_oFile(m_strFile.c_str(), CKorIniFile::PATH_UNCHANGED)
    {
        WriteFile(m_strFile, "[A]\nx=1\ny=2\n[B]\nx=3\n");
    }

    ScratchDir m_oDir;
    const std::string m_strFile;
    CKorIniFile m_oFile;
};

TEST_F(KorIniIndex, ALineInsertedThroughTheMemberIsFound)
{
    Exchange oExchange(&m_oFile, false);
    EXPECT_EQ("none", ValueOf(oExchange, "A", "z"));
    oExchange.Insert(1, "A", "z", "9");
    EXPECT_EQ("9", ValueOf(oExchange, "a", "Z"));
    oExchange.Insert(1, "A", "x", "8");
    EXPECT_EQ("8", ValueOf(oExchange, "A", "x"));
    oExchange.SetOptionString("A", "x", "7");
    EXPECT_EQ((Texts{"[A]  ", "x=7 ", "z=9 ", "x=1 ", "y=2 ", "[B]  ", "x=3 "}), oExchange.Lines());
}

TEST_F(KorIniIndex, ALineErasedThroughTheMemberIsGone)
{
    Exchange oExchange(&m_oFile, false);
    oExchange.Erase(1);
    EXPECT_EQ("none", ValueOf(oExchange, "A", "x"));
    EXPECT_EQ("3", ValueOf(oExchange, "B", "x"));
    oExchange.Erase(2);
    EXPECT_EQ("3", ValueOf(oExchange, "B", nullptr));
    oExchange.Erase(2);
    EXPECT_EQ("none", ValueOf(oExchange, "B", nullptr));
    oExchange.SetOptionString("B", "x", "4");
    EXPECT_EQ((Texts{"[A]  ", "y=2 ", "[B] ", "x=4 "}), oExchange.Lines());
}

TEST_F(KorIniIndex, OfLinesReorderedThroughTheMemberTheFirstCounts)
{
    Exchange oExchange(&m_oFile, false);
    oExchange.Insert(2, "A", "x", "8");
    EXPECT_EQ("1", ValueOf(oExchange, "A", "x"));
    std::reverse(oExchange.m_apOptionLines.begin(), oExchange.m_apOptionLines.end());
    EXPECT_EQ("8", ValueOf(oExchange, "A", "x"));
    EXPECT_EQ("2", ValueOf(oExchange, "A", nullptr));
    oExchange.SetOptionString("A", "new", "5");
    EXPECT_EQ((Texts{"x=3 ", "[B]  ", "y=2 ", "new=5 ", "x=8 ", "x=1 ", "[A]  "}),
              oExchange.Lines());
}

TEST_F(KorIniIndex, ALineRenamedInTheListHasItsNewName)
{
    Exchange oExchange(&m_oFile, false);
    oExchange.m_apOptionLines[1]->m_strOption = "y";
    EXPECT_EQ("none", ValueOf(oExchange, "A", "x"));
    EXPECT_EQ("1", ValueOf(oExchange, "A", "y"));
    oExchange.m_apOptionLines[3]->m_strSection = "C";
    EXPECT_EQ("3", ValueOf(oExchange, "B", ""));
    EXPECT_EQ("", ValueOf(oExchange, "C", ""));
}

TEST_F(KorIniIndex, LinesAddedToAChangedListArePlacedByWhatItHoldsThen)
{
    Exchange oExchange(&m_oFile, false);
    oExchange.Insert(5, "C", "z", "1");
    std::string strSection = "C";
    oExchange.AddOptionLine("z=2", strSection);
    oExchange.AddOptionLine("y=3", strSection);
    EXPECT_EQ(
        (Texts{"[A]  ", "x=1 ", "y=2 ", "[B]  ", "x=3 ", "z=1 ", "## COMMENTED ## z=2 ", "y=3 "}),
        oExchange.Lines());
}

TEST_F(KorIniIndex, EveryEditOfADerivedClassShowsAtOnceInTheList)
{
    Exchange oExchange(&m_oFile, false);
    oExchange.SetOptionString("A", "z", "9");
    EXPECT_EQ("z=9 ", oExchange.Lines()[1]);
    std::string strSection = "A";
    oExchange.AddOptionLine("w=8", strSection);
    EXPECT_EQ("w=8 ", oExchange.Lines()[1]);
    oExchange.RemoveOption("A", "z");
    EXPECT_EQ("x=1 ", oExchange.Lines()[2]);
}

TEST_F(KorIniIndex, ALineRenamedAfterItWasHandedOutHasItsNewName)
{
    CKorIniOptionExchange oExchange(&m_oFile, false);
    SOptionLine* const pLine = *oExchange.FindOption("A", "x");
    EXPECT_EQ("1", ValueOf(oExchange, "A", "x"));
    pLine->m_strOption = "z";
    EXPECT_EQ("none", ValueOf(oExchange, "A", "x"));
    EXPECT_EQ("1", ValueOf(oExchange, "A", "z"));
    pLine->m_strSection = "B";
    EXPECT_EQ("none", ValueOf(oExchange, "A", "z"));
    EXPECT_EQ("1", ValueOf(oExchange, "B", nullptr));
    EXPECT_EQ((Texts{"x", "z"}), OptionsOf(oExchange, "B"));
}

TEST_F(KorIniIndex, ALineThatWasHandedOutMayChangeAfterManyLookUpsToo)
{
    CKorIniOptionExchange oExchange(&m_oFile, false);
    SOptionLine* const pLine = *oExchange.FindOption("A", "x");
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ("1", ValueOf(oExchange, "A", "x"));
    pLine->m_strOption = "z";
    EXPECT_EQ("none", ValueOf(oExchange, "A", "x"));
    EXPECT_EQ("1", ValueOf(oExchange, "A", "z"));
}

TEST_F(KorIniIndex, TheNeighboursOfALineThatWasHandedOutMayChangeToo)
{
    CKorIniOptionExchange oExchange(&m_oFile, false);
    const auto itHeader = oExchange.FindOption("A", nullptr);
    itHeader[1]->m_strOption = "y";
    EXPECT_EQ("1", ValueOf(oExchange, "A", "y"));
    std::swap(itHeader[1], itHeader[2]);
    EXPECT_EQ("2", ValueOf(oExchange, "A", "y"));
}

TEST_F(KorIniIndex, NewOptionsStandInTheListThatIsHandedOut)
{
    CKorIniOptionExchange oExchange(&m_oFile, false);
    oExchange.SetOptionString("A", "v", "5");
    oExchange.SetOptionString("A", "w", "6");
    const auto itHeader = oExchange.FindOption("A", nullptr);
    EXPECT_EQ("w", itHeader[1]->m_strOption);
    EXPECT_EQ("v", itHeader[2]->m_strOption);
    EXPECT_EQ(2, oExchange.FindOption("A", "v") - oExchange.FindOption("A", nullptr));
}

TEST_F(KorIniIndex, OptionsSetAfterTheListWasWrittenStandBehindTheirHeaders)
{
    CKorIniOptionExchange oExchange(&m_oFile, true);
    oExchange.SetOptionString("A", "v", "5");
    oExchange.WriteIniOptions();
    oExchange.SetOptionString("B", "w", "6");
    oExchange.SetOptionString("A", "u", "7");
    oExchange.WriteIniOptions();
    EXPECT_EQ("\n[A]  \nu=7 \nv=5 \nx=1 \ny=2 \n\n[B]  \nw=6 \nx=3 \n", ReadFile(m_strFile));
}

TEST_F(KorIniIndex, WhoeverReadsAgainHoldsNoLineAnyMore)
{
    CKorIniOptionExchange oExchange(&m_oFile, false);
    (*oExchange.FindOption("A", "x"))->m_strOption = "z";
    oExchange.ReadIniOptions();
    EXPECT_EQ("1", ValueOf(oExchange, "A", "x"));
    EXPECT_EQ("none", ValueOf(oExchange, "A", "z"));
}

TEST_F(KorIniIndex, RemovedOptionsAreNotFoundAndMayComeBack)
{
    CKorIniOptionExchange oExchange(&m_oFile, true);
    oExchange.SetOptionString("A", "z", "9");
    oExchange.RemoveOption("A", "x");
    EXPECT_EQ("none", ValueOf(oExchange, "A", "x"));
    EXPECT_EQ("9", ValueOf(oExchange, "A", "z"));
    oExchange.SetOptionString("A", "x", "7");
    EXPECT_EQ("7", ValueOf(oExchange, "A", "x"));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ("3", ValueOf(oExchange, "B", "x"));
    oExchange.RemoveOption("B", "x");
    EXPECT_EQ("none", ValueOf(oExchange, "B", "x"));
    oExchange.WriteIniOptions();
    EXPECT_EQ("\n[A]  \nx=7 \nz=9 \ny=2 \n\n[B]  \n", ReadFile(m_strFile));
}

TEST_F(KorIniIndex, TheCaseRuleMayChangeAtAnyTime)
{
    m_oFile.SetCasesensitiv(true);
    WriteFile(m_strFile, "[A]\nx=1\nX=2\n[a]\nx=3\n");
    CKorIniOptionExchange oExchange(&m_oFile, false);
    for (int i = 0; i < 20; ++i) {
        m_oFile.SetCasesensitiv(false);
        EXPECT_EQ("1", ValueOf(oExchange, "a", "X"));
        oExchange.SetOptionString("a", ("n" + std::to_string(i)).c_str(), "");
        m_oFile.SetCasesensitiv(true);
        EXPECT_EQ("2", ValueOf(oExchange, "A", "X"));
        EXPECT_EQ("3", ValueOf(oExchange, "a", "x"));
    }
    oExchange.WriteIniOptions();
    m_oFile.SetCasesensitiv(false);
    oExchange.ReadIniOptions();
    EXPECT_EQ(21U, OptionsOf(oExchange, "A").size());
}

TEST_F(KorIniIndex, AnOptionBehindTheLastHeaderSpellsTheSectionForTheLinesBehindIt)
{
    WriteFile(m_strFile, "[A]\n");
    CKorIniOptionExchange oExchange(&m_oFile, true);
    oExchange.SetOptionString("a", "x", "1");
    std::string strSection = "a";
    oExchange.AddOptionLine("y=2", strSection);
    oExchange.WriteIniOptions();
    EXPECT_EQ("\n[A]  \nx=1 \ny=2 \n", ReadFile(m_strFile));
}

TEST_F(KorIniIndex, EditsAndLookUpsAfterManyRemovalsAreRight)
{
    CKorIniOptionExchange oExchange(&m_oFile, false);
    for (int i = 0; i < 50; ++i) {
        const std::string strOption = "n" + std::to_string(i);
        oExchange.SetOptionString("A", strOption.c_str(), "new");
        oExchange.RemoveOption("A", i % 2 == 0 ? strOption.c_str() : "none");
        EXPECT_EQ(i % 2 == 0 ? "none" : "new", ValueOf(oExchange, "A", strOption.c_str()));
        EXPECT_EQ("3", ValueOf(oExchange, "B", "x"));
    }
    EXPECT_EQ(27U, OptionsOf(oExchange, "A").size());
}

TEST_F(KorIniIndex, NamesOfAnyLengthMayDifferInTheCaseOfAnyLetter)
{
    const std::string strLetters = "abcdefghijklmnopqrstuvwxyz";
    std::string strContent;
    for (size_t nLength = 1; nLength <= strLetters.size(); ++nLength) {
        const std::string strName = strLetters.substr(0, nLength);
        strContent += "[" + strName + "]\n" + strName + "=" + std::to_string(nLength) + "\n";
    }
    WriteFile(m_strFile, strContent);
    CKorIniOptionExchange oExchange(&m_oFile, false);
    for (size_t nLength = 1; nLength <= strLetters.size(); ++nLength) {
        for (size_t nUpper = 0; nUpper < nLength; ++nUpper) {
            std::string strName = strLetters.substr(0, nLength);
            strName[nUpper] = static_cast<char>(strName[nUpper] - 'a' + 'A');
            EXPECT_EQ(std::to_string(nLength),
                      ValueOf(oExchange, strName.c_str(), strName.c_str()));
        }
    }
}

TEST_F(KorIniIndex, WithoutHeadersLinesAreAddedAndFoundToo)
{
    CKorIniOptionExchange oExchange;
    std::string strSection;
    for (const char* pszLine : {"x=1", "y=2", "x=3", "[]", "z=4"})
        oExchange.AddOptionLine(pszLine, strSection);
    EXPECT_EQ("1", ValueOf(oExchange, "", "x"));
    EXPECT_EQ("4", ValueOf(oExchange, "", "z"));
    oExchange.SetOptionString("", "w", "0");
    strSection = "s";
    oExchange.AddOptionLine("x=5", strSection);
    EXPECT_EQ("5", ValueOf(oExchange, "S", "x"));
    EXPECT_EQ((Texts{"w", "x", "y", "z"}), OptionsOf(oExchange, ""));
}

TEST_F(KorIniIndex, ALineMayBeAddedThatIsTheVariableOfItsSection)
{
    CKorIniOptionExchange oExchange;
    std::string strText = "  [a section with a long name] # and a comment";
    oExchange.AddOptionLine(strText, strText);
    EXPECT_EQ("a section with a long name", strText);
    EXPECT_EQ("# and a comment ", (*oExchange.FindOption(strText.c_str(), ""))->m_strComment);
}

} // namespace
