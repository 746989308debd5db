#include "config/KorSafeIniFile.h"

#include "config/KorOptionExchange.h"
#include "tests/support/CallWatch.h"
#include "tests/support/Confinement.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

using namespace std::string_literals;
using Texts = std::vector<std::string>;

/// A program's options with an exchange that each test gives.
class Settings : public CKorSafeIniFile
{
public:
    using CKorSafeIniFile::CKorSafeIniFile;
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        ++m_nRuns;
        m_fnExchange(pExchange);
    }
    std::function<void(CKorIniOptionExchange*)> m_fnExchange = [](CKorIniOptionExchange*) {};
    int m_nRuns = 0;
};

class KorSafeIniFile : public testing::Test
{
protected:
    KorSafeIniFile() : m_oFile(m_oDir.File("test.ini").c_str(), CKorIniFile::PATH_UNCHANGED)
    {
        m_oFile.m_fnExchange = [this](CKorIniOptionExchange* pExchange) {
            IOX_Std<std::string>(pExchange, "S", "x", m_strX, "default");
            IOX_Std<std::string>(pExchange, "S", "y", m_strY, "default");
        };
    }

    void Write(const std::string& strText) { WriteFile(m_oFile.GetIniFileName(), strText); }
    std::string Content() const { return ReadFile(m_oFile.GetIniFileName()); }
    /// The only finding of the last operation.
    SKorIniFinding Finding()
    {
        EXPECT_EQ(1U, m_oFile.GetFindings().size());
        return m_oFile.GetFindings().empty() ? SKorIniFinding() : m_oFile.GetFindings()[0];
    }

    ScratchDir m_oDir;
    Settings m_oFile;
    std::string m_strX = "before";
    std::string m_strY = "before";
};

TEST_F(KorSafeIniFile, NamesItsFileAsThePlainClassDoes)
{
    EXPECT_EQ("Konfig.ini", CKorSafeIniFile(nullptr, CKorIniFile::PATH_UNCHANGED).GetIniFileName());
    EXPECT_EQ(CKorIniFile("../x.ini", CKorIniFile::PATH_PROGRAM_DIR).GetIniFileName(),
              CKorSafeIniFile("../x.ini", CKorIniFile::PATH_PROGRAM_DIR).GetIniFileName());
    EXPECT_FALSE(m_oFile.IsCaseSensitiv());
}

TEST_F(KorSafeIniFile, ReadsTheProgramsOptions)
{
    Write("[S]\nx=\"two words\" # c\n");
    EXPECT_TRUE(m_oFile.UpdateOptions(false));
    EXPECT_EQ("two words", m_strX);
    EXPECT_EQ("default", m_strY);
    EXPECT_EQ(0, m_oFile.GetLastError());
    EXPECT_FALSE(m_oFile.WasWritten());
    EXPECT_TRUE(m_oFile.GetFindings().empty());
}

TEST_F(KorSafeIniFile, SetsEveryOptionThatTheExchangeNames)
{
    Write("# c\n[S]\nz=1\nx = 5 # note\n[T]\n");
    m_strX = "6";
    m_strY = "two words";
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_TRUE(m_oFile.WasWritten());
    EXPECT_EQ("# c\n[S]\nz=1\nx = 6 # note\ny=\"two words\"\n[T]\n", Content());
    EXPECT_EQ(0, m_oFile.GetLastError());
}

TEST_F(KorSafeIniFile, RunsTheExchangeForUpdateOptionsAlone)
{
    Write("[S]\nx=\"5\"\n");
    EXPECT_EQ("\"5\"", m_oFile.ReadOption("s", "X", "none"));
    EXPECT_EQ("none", m_oFile.ReadOption("S", "y", "none"));
    EXPECT_EQ("none", m_oFile.ReadOption("S", "", "none"));
    EXPECT_EQ("", m_oFile.ReadOption(nullptr, nullptr, nullptr));
    EXPECT_TRUE(m_oFile.HasOption("S", "x"));
    EXPECT_FALSE(m_oFile.HasOption("S", "y"));
    EXPECT_FALSE(m_oFile.HasOption("S", nullptr));
    EXPECT_TRUE(m_oFile.WriteOption("S", "x", "6"));
    EXPECT_TRUE(m_oFile.RemoveOption("S", "x"));
    EXPECT_TRUE(m_oFile.RemoveSection("S"));
    Texts vecNames;
    m_oFile.ReadAllSections(vecNames);
    m_oFile.ReadAllSectionEntries("S", vecNames);
    EXPECT_EQ(0, m_oFile.m_nRuns);
    EXPECT_EQ("before", m_strX);
    m_oFile.UpdateOptions(false);
    EXPECT_EQ(1, m_oFile.m_nRuns);
}

TEST_F(KorSafeIniFile, TellsAnEmptyOptionFromAMissingOne)
{
    Write("[S]\nx=\n");
    EXPECT_TRUE(m_oFile.HasOption("S", "x"));
    EXPECT_EQ("", m_oFile.ReadOption("S", "x", "none"));
    EXPECT_FALSE(m_oFile.HasOption("T", "x"));
    m_oFile.SetCasesensitiv(true);
    EXPECT_FALSE(m_oFile.HasOption("s", "x"));
}

TEST_F(KorSafeIniFile, ListsSectionsAndOptions)
{
    Write("a=1\n[S]\nx=1\nX=2\n[b]\n[s]\nc=1\n");
    Texts vecNames;
    m_oFile.ReadAllSections(vecNames);
    EXPECT_EQ((Texts{"S", "b"}), vecNames);
    m_oFile.ReadAllSectionEntries("s", vecNames);
    EXPECT_EQ((Texts{"c", "x"}), vecNames);
    m_oFile.ReadAllSectionEntries(nullptr, vecNames);
    EXPECT_EQ(Texts{"a"}, vecNames);
}

TEST_F(KorSafeIniFile, AMissingFileHasNoOptionsAndIsMadeByTheFirstWrite)
{
    EXPECT_TRUE(m_oFile.UpdateOptions(false));
    EXPECT_EQ(ENOENT, m_oFile.GetLastError());
    EXPECT_TRUE(m_oFile.GetFindings().empty());
    EXPECT_EQ("default", m_strX);
    EXPECT_EQ("none", m_oFile.ReadOption("S", "x", "none"));
    EXPECT_EQ(ENOENT, m_oFile.GetLastError());
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_EQ(0, m_oFile.GetLastError());
    EXPECT_EQ("[S]\nx=default\ny=default\n", Content());
}

TEST_F(KorSafeIniFile, AFailedReadLeavesTheProgramAlone)
{
    ASSERT_EQ(0, mkdir(m_oFile.GetIniFileName().c_str(), 0700));
    for (const bool bWriteBack : {false, true}) {
        EXPECT_FALSE(m_oFile.UpdateOptions(bWriteBack));
        EXPECT_EQ(EISDIR, m_oFile.GetLastError());
        EXPECT_EQ(SKorIniFinding::FINDING_IO_ERROR, Finding().m_eKind);
        EXPECT_FALSE(m_oFile.WasWritten());
    }
    EXPECT_EQ(0, m_oFile.m_nRuns);
    EXPECT_EQ("before", m_strX);
    EXPECT_EQ("none", m_oFile.ReadOption("S", "x", "none"));
    EXPECT_EQ(EISDIR, m_oFile.GetLastError());
    EXPECT_FALSE(m_oFile.HasOption("S", "x"));
    EXPECT_EQ(EISDIR, m_oFile.GetLastError());
    EXPECT_FALSE(m_oFile.WriteOption("S", "x", "1"));
    EXPECT_FALSE(m_oFile.RemoveOption("S", "x"));
    EXPECT_FALSE(m_oFile.RemoveSection("S"));
    EXPECT_EQ("the file cannot be read: Is a directory", Finding().m_strText);
}

TEST_F(KorSafeIniFile, AFileThatMayNotBeReadIsNotOverwritten)
{
    Write("[S]\nx=1\n");
    ASSERT_EQ(0, chmod(m_oFile.GetIniFileName().c_str(), 0200));
    InChild([this] {
        DropPrivileges();
        EXPECT_FALSE(m_oFile.WriteOption("S", "y", "1"));
        EXPECT_EQ(EACCES, m_oFile.GetLastError());
    });
    EXPECT_EQ("[S]\nx=1\n", Content());
}

TEST_F(KorSafeIniFile, NothingIsWrittenWhenTheBytesWouldBeTheSame)
{
    Write("[S]\nx=1\ny=2\n");
    const auto oTime = std::filesystem::last_write_time(m_oFile.GetIniFileName());
    m_strX = "1";
    m_strY = "2";
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_FALSE(m_oFile.WasWritten());
    EXPECT_TRUE(m_oFile.WriteOption("S", "x", "1"));
    EXPECT_FALSE(m_oFile.WasWritten());
    EXPECT_EQ(oTime, std::filesystem::last_write_time(m_oFile.GetIniFileName()));
}

TEST_F(KorSafeIniFile, NothingIsWrittenWhenTheExchangeThrows)
{
    Write("[S]\nx=1\n");
    m_oFile.m_fnExchange = [](CKorIniOptionExchange* pExchange) {
        pExchange->SetOptionString("S", "x", "2");
        throw std::runtime_error("no");
    };
    EXPECT_THROW(m_oFile.UpdateOptions(true), std::runtime_error);
    EXPECT_EQ("[S]\nx=1\n", Content());
    EXPECT_FALSE(m_oFile.WasWritten());
}

TEST_F(KorSafeIniFile, AnExchangeRemovesByNameAndTheLastWordCounts)
{
    Write("[S]\nx=1\ny=2\nz=3\n");
    m_oFile.m_fnExchange = [](CKorIniOptionExchange* pExchange) {
        pExchange->RemoveOption("S", "x");
        pExchange->SetOptionString("S", "y", "4");
        pExchange->SetOptionString("S", "y", "5");
        pExchange->SetOptionString("S", "n", "6");
        pExchange->RemoveOption("S", "n");
        pExchange->RemoveOption("S", "z");
        pExchange->SetOptionString("S", "z", "7");
    };
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_EQ("[S]\ny=5\nz=7\n", Content());
}

TEST_F(KorSafeIniFile, AnExchangeThatReadsAgainForgetsWhatItSet)
{
    Write("[S]\nx=1\n");
    std::string strRead;
    m_oFile.m_fnExchange = [&](CKorIniOptionExchange* pExchange) {
        pExchange->SetOptionString("S", "x", "2");
        pExchange->ReadIniOptions();
        pExchange->GetOptionString("S", "x", strRead);
        pExchange->WriteIniOptions();
    };
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_EQ("1", strRead);
    EXPECT_EQ("[S]\nx=1\n", Content());
    EXPECT_FALSE(m_oFile.WasWritten());
}

TEST_F(KorSafeIniFile, AnExchangeSeesTheCaseRule)
{
    Write("[S]\nX=1\n");
    m_oFile.SetCasesensitiv(true);
    EXPECT_TRUE(m_oFile.UpdateOptions(false));
    EXPECT_EQ("default", m_strX);
    m_oFile.SetCasesensitiv(false);
    EXPECT_TRUE(m_oFile.UpdateOptions(false));
    EXPECT_EQ("1", m_strX);
}

TEST_F(KorSafeIniFile, WhatChangesDuringTheExchangeIsKept)
{
    Write("[S]\nx=1\ny=1\n");
    m_oFile.m_fnExchange = [this](CKorIniOptionExchange* pExchange) {
        Settings oOther(m_oFile.GetIniFileName().c_str(), CKorIniFile::PATH_UNCHANGED);
        EXPECT_TRUE(oOther.WriteOption("S", "y", "2"));
        pExchange->SetOptionString("S", "x", "2");
    };
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_EQ("[S]\nx=2\ny=2\n", Content());
}

TEST_F(KorSafeIniFile, AFileThatVanishesDuringTheExchangeIsMadeAnew)
{
    Write("[S]\nx=1\nz=1\n");
    m_oFile.m_fnExchange = [this](CKorIniOptionExchange* pExchange) {
        std::filesystem::remove(m_oFile.GetIniFileName());
        pExchange->SetOptionString("S", "x", "2");
    };
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_EQ("[S]\nx=2\n", Content());
}

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

TEST_F(KorSafeIniFile, NoticesThatTheFileChanged)
{
    EXPECT_FALSE(m_oFile.HasChangedOnDisk());
    Write("[S]\nx=1\n");
    EXPECT_TRUE(m_oFile.HasChangedOnDisk());
    m_oFile.UpdateOptions(false);
    EXPECT_FALSE(m_oFile.HasChangedOnDisk());
    EXPECT_TRUE(m_oFile.WriteOption("S", "x", "2"));
    EXPECT_FALSE(m_oFile.HasChangedOnDisk());

    Settings oOther(m_oFile.GetIniFileName().c_str(), CKorIniFile::PATH_UNCHANGED);
    EXPECT_TRUE(oOther.WriteOption("S", "x", "3"));
    EXPECT_TRUE(m_oFile.HasChangedOnDisk());
    EXPECT_FALSE(oOther.HasChangedOnDisk());
    EXPECT_EQ("3", m_oFile.ReadOption("S", "x", ""));
    EXPECT_FALSE(m_oFile.HasChangedOnDisk());
    std::filesystem::remove(m_oFile.GetIniFileName());
    EXPECT_TRUE(m_oFile.HasChangedOnDisk());
    m_oFile.UpdateOptions(false);
    EXPECT_FALSE(m_oFile.HasChangedOnDisk());
}

TEST_F(KorSafeIniFile, ThePlainOperationsAreReachedThroughTheBaseClass)
{
    Write("[S]\nx=1\n");
    CKorIniFile& oPlain = m_oFile;
    oPlain.WriteOption("S", "z", "2");
    EXPECT_EQ("\n[S]  \ny=before \nz=2 \nx=before \n", Content());
    EXPECT_TRUE(oPlain.UpdateOptions(false));
    EXPECT_EQ("before", m_strX);
}

} // namespace
