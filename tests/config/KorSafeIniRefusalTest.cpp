#include "config/KorSafeIniFile.h"

#include "config/KorOptionExchange.h"
#include "tests/config/SafeIniFileTest.h"
#include "tests/support/Confinement.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace
{

TEST_F(KorSafeIniFile, RefusesWhatTheFormatCannotHoldWithoutRepeatingTheValue)
{
    const std::string strBefore = "[S]\nx=1\n";
    Write(strBefore);
    const char* const aapszRefused[][3] = {
        {"S", "", "secret"},    {"S", nullptr, "secret"}, {"S", "[x", "secret"},
        {"S", "x=", "secret"},  {"S", "x#y", "secret"},   {"S", "x\ny", "secret"},
        {"S", " x", "secret"},  {"S", "x\t", "secret"},   {"S", "x\r", "secret"},
        {"S]", "x", "secret"},  {"S#", "x", "secret"},    {"S\n", "x", "secret"},
        {"S", "x", "secret#1"}, {"S", "x", "secret\n1"},  {"S", "x", " secret"},
        {"S", "x", "secret\r"}, {"S", "x", "secret\f"},   {"S", "x", "\"secret\" "},
    };
    for (const auto& [pszSection, pszOption, pszValue] : aapszRefused) {
        EXPECT_FALSE(m_oFile.WriteOption(pszSection, pszOption, pszValue));
        EXPECT_EQ(SKorIniFinding::FINDING_NOT_STORABLE, Finding().m_eKind);
        EXPECT_EQ(pszSection, Finding().m_strSection);
        EXPECT_EQ(std::string::npos, Finding().m_strText.find("secret"));
        EXPECT_EQ(EINVAL, m_oFile.GetLastError());
        EXPECT_FALSE(m_oFile.WasWritten());
        EXPECT_EQ(strBefore, Content());
    }
    EXPECT_FALSE(m_oFile.WriteOption("S", "x", "a#b"));
    EXPECT_EQ("[S] x cannot be stored: the value holds \"#\", which begins a comment",
              Finding().m_strText);
}

TEST_F(KorSafeIniFile, StoresAllElse)
{
    const char* const aapszStored[][3] = {
        {"", "x", "1"},           {"[", "x", "1"},   {" S ", "x", "1"},  {"S\r", "x", "1"},
        {"S=;", "x[]", "1"},      {"S", ";x", "1"},  {"S", "x y", "1"},  {"S", "]", "="},
        {"S", "x", "\"a\"b"},     {"S", "y", "[z]"}, {"S", "z", "a\rb"}, {"S", "v", "a\tb=c"},
        {"\xE4", "\xC4", "\xFF"}, {"S", "w", ""},
    };
    for (const auto& [pszSection, pszOption, pszValue] : aapszStored) {
        EXPECT_TRUE(m_oFile.WriteOption(pszSection, pszOption, pszValue));
        EXPECT_TRUE(m_oFile.WasWritten());
    }
    CKorIniFile oPlain(m_oFile.GetIniFileName().c_str(), CKorIniFile::PATH_UNCHANGED);
    for (const auto& [pszSection, pszOption, pszValue] : aapszStored) {
        EXPECT_EQ(pszValue, m_oFile.ReadOption(pszSection, pszOption, "none"));
        EXPECT_EQ(pszValue, oPlain.ReadOption(pszSection, pszOption, "none"));
    }
}

TEST_F(KorSafeIniFile, OneRefusalKeepsTheWholeExchangeOut)
{
    Write("[S]\nx=1\ny=2\n");
    m_strX = "3";
    for (const std::string& strBad : {"pa#ss"s, "a\nb"s, "a\0b"s}) {
        m_strY = strBad;
        EXPECT_FALSE(m_oFile.UpdateOptions(true));
        EXPECT_EQ(SKorIniFinding::FINDING_NOT_STORABLE, Finding().m_eKind);
        EXPECT_EQ("y", Finding().m_strOption);
        EXPECT_EQ("[S]\nx=1\ny=2\n", Content());
    }
}

TEST_F(KorSafeIniFile, TakesAValueThatTheFileHoldsAlready)
{
    Write("[S]\nx=a\0b\ny=1\n"s);
    EXPECT_TRUE(m_oFile.UpdateOptions(false));
    EXPECT_EQ("a\0b"s, m_strX);
    m_strY = "2";
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_EQ("[S]\nx=a\0b\ny=2\n"s, Content());
}

TEST_F(KorSafeIniFile, ReportsOptionsThatTheProgramDoesNotKnowOnceEach)
{
    Write("old=1\n[S]\nX=1\nz=2\nZ=3\n[T]\ny=4\n");
    EXPECT_TRUE(m_oFile.UpdateOptions(false));
    EXPECT_TRUE(m_oFile.GetFindings().empty());
    m_oFile.SetReportUnknown(true);
    for (const bool bWriteBack : {false, true}) {
        EXPECT_TRUE(m_oFile.UpdateOptions(bWriteBack));
        ASSERT_EQ(3U, m_oFile.GetFindings().size());
        EXPECT_EQ(SKorIniFinding::FINDING_UNKNOWN_OPTION, m_oFile.GetFindings()[1].m_eKind);
        EXPECT_EQ(1U, m_oFile.GetFindings()[0].m_nLine);
        EXPECT_EQ("old is no option of this program", m_oFile.GetFindings()[0].m_strText);
        EXPECT_EQ(4U, m_oFile.GetFindings()[1].m_nLine);
        EXPECT_EQ("[S] z is no option of this program", m_oFile.GetFindings()[1].m_strText);
        EXPECT_EQ("T", m_oFile.GetFindings()[2].m_strSection);
        EXPECT_EQ("y", m_oFile.GetFindings()[2].m_strOption);
    }
    EXPECT_EQ("none", m_oFile.ReadOption("S", "none", "none"));
    EXPECT_TRUE(m_oFile.GetFindings().empty());
}

TEST_F(KorSafeIniFile, TakesFindingsOfTheProgramsOwnTypes)
{
    Write("[S]\n\ny=1\nX=abc\nx=2\n");
    m_oFile.m_fnExchange = [](CKorIniOptionExchange* pExchange) {
        SKorIniFinding oFinding{SKorIniFinding::FINDING_BAD_VALUE, 0, "S", "x", "bad"};
        EXPECT_TRUE(KorReportIniFinding(pExchange, oFinding));
        oFinding.m_strOption = "missing";
        EXPECT_TRUE(KorReportIniFinding(pExchange, oFinding));
        pExchange->SetOptionString("S", "y", "2");
    };
    EXPECT_TRUE(m_oFile.UpdateOptions(false));
    ASSERT_EQ(2U, m_oFile.GetFindings().size());
    EXPECT_EQ(4U, m_oFile.GetFindings()[0].m_nLine);
    EXPECT_EQ("bad", m_oFile.GetFindings()[0].m_strText);
    EXPECT_EQ(0U, m_oFile.GetFindings()[1].m_nLine);

    EXPECT_FALSE(m_oFile.UpdateOptions(true));
    EXPECT_EQ(EINVAL, m_oFile.GetLastError());
    EXPECT_EQ("[S]\n\ny=1\nX=abc\nx=2\n", Content());
    CKorIniOptionExchange oPlain;
    EXPECT_FALSE(KorReportIniFinding(&oPlain, {}));
    EXPECT_FALSE(KorReportIniFinding(nullptr, {}));
}

} // namespace
