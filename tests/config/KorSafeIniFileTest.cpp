#include "config/KorSafeIniFile.h"

#include "config/KorOptionExchange.h"
#include "tests/config/SafeIniFileTest.h"
#include "tests/support/Confinement.h"

#include <cerrno>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

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

TEST_F(KorSafeIniFile, WhatAnOperationTellsIsOfTheLastOneAlone)
{
    Texts vecNames;
    const std::function<void()> aOperations[] = {
        [&] { m_oFile.ReadOption("S", "x", ""); },
        [&] { m_oFile.HasOption("S", "x"); },
        [&] { m_oFile.ReadAllSections(vecNames); },
        [&] { m_oFile.ReadAllSectionEntries("S", vecNames); },
        [&] { m_oFile.WriteOption("S", "x", "1"); },
        [&] { m_oFile.UpdateOptions(false); },
    };
    for (const auto& fnOperation : aOperations) {
        Write("");
        ASSERT_TRUE(m_oFile.WriteOption("S", "x", "1"));
        ASSERT_TRUE(m_oFile.WasWritten());
        fnOperation();
        EXPECT_FALSE(m_oFile.WasWritten());
        ASSERT_FALSE(m_oFile.WriteOption("S", "a=b", "1"));
        ASSERT_EQ(1U, m_oFile.GetFindings().size());
        fnOperation();
        EXPECT_EQ(0, m_oFile.GetLastError());
        EXPECT_TRUE(m_oFile.GetFindings().empty());
    }
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
