#include "app/KorApplication.h"

#include "tests/support/Arguments.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace
{

/// Notes what is called and shows the protected members.
class Application : public CKorBaseApplication
{
public:
    explicit Application(const char* pszIniFile = nullptr, const char* pszApplName = nullptr,
                         const char* pszLogFile = nullptr)
        : CKorBaseApplication(pszIniFile, pszApplName, pszLogFile)
    {
    }

    void Run() override { m_strCalls += "run "; }
    bool Initialize() override
    {
        m_strCalls += "initialize ";
        return m_bInitializes;
    }
    int Finalize() override
    {
        m_strCalls += "finalize ";
        return 7;
    }
    void DoCmdLineExchange(CKorCmdLineApplExchange* pExchange) override
    {
        m_strCalls += pExchange->IsInitialized() ? "read " : "declare ";
        pExchange->AddParamDescription("p", true);
        std::string strFirst;
        pExchange->GetParameter(nullptr, false, strFirst);
        pExchange->GetParameter("p", true, m_strValue);
        pExchange->GetParameter(nullptr, false, m_strPositional);
    }

    const std::string& IniFile() const { return m_strIniFile; }
    const std::string& LogFile() const { return m_strLogFile; }
    int AppData() const { return m_nAppData; }
    CKorCmdLine& CmdLine() { return m_oCmdLine; }

    bool m_bInitializes = true;
    std::string m_strCalls;
    std::string m_strValue;
    std::string m_strPositional;
};

/// An application that overrides nothing it need not.
class PlainApplication : public CKorBaseApplication
{
public:
    PlainApplication() : CKorBaseApplication(nullptr, nullptr, nullptr) {}
    void Run() override {}
};

/// All arguments that a command line holds.
std::vector<std::string> AllArguments(CKorCmdLine& oCmdLine)
{
    CKorCmdLineExchange oExchange(&oCmdLine);
    std::vector<std::string> vecArguments;
    std::string strArgument;
    while (oExchange.GetParameter(nullptr, false, strArgument))
        vecArguments.push_back(strArgument);
    return vecArguments;
}

TEST(KorApplication, StartsWithDefaults)
{
    const Application oApplication;
    EXPECT_EQ("", oApplication.GetApplName());
    EXPECT_EQ("", oApplication.GetCommandLine());
    EXPECT_EQ("", oApplication.IniFile());
    EXPECT_EQ(".log", oApplication.LogFile());
    EXPECT_EQ(0, oApplication.AppData());
    EXPECT_EQ("0.0.0", oApplication.GetInfo().GetVersion());
}

TEST(KorApplication, TakesOverTheConstructorsArguments)
{
    const Application oApplication("my.ini", "gw", "gw.log");
    EXPECT_EQ("gw", oApplication.GetApplName());
    EXPECT_EQ("gw", oApplication.GetInfo().GetApplDescription());
    EXPECT_EQ("my.ini", oApplication.IniFile());
    EXPECT_EQ("gw.log", oApplication.LogFile());
}

TEST(KorApplication, TheCommandLineIsEmptyWithoutArguments)
{
    Arguments oArguments{"/opt/bin/daemon.bin"};
    Application oApplication;
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("", oApplication.GetCommandLine());
    EXPECT_EQ("daemon", oApplication.GetApplName());
}

TEST(KorApplication, TheCommandLineEndsInABlank)
{
    Arguments oArguments{"/opt/bin/daemon.bin", "a", "b"};
    Application oApplication;
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("a b ", oApplication.GetCommandLine());
    EXPECT_EQ((std::vector<std::string>{"/opt/bin/daemon.bin", "a", "b"}),
              AllArguments(oApplication.CmdLine()));
}

TEST(KorApplication, ASecondInitializationAppendsToTheCommandLine)
{
    Arguments oArguments{"daemon.bin", "a"};
    Application oApplication;
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("a a ", oApplication.GetCommandLine());
    EXPECT_EQ(2U, AllArguments(oApplication.CmdLine()).size());
}

TEST(KorApplication, AGivenNameNamesTheIniFileBesideTheProgram)
{
    Arguments oArguments{"/opt/bin/daemon.bin"};
    Application oApplication(nullptr, "gw");
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("gw", oApplication.GetApplName());
    EXPECT_EQ("/opt/bin/gw.ini", oApplication.IniFile());
}

TEST(KorApplication, TheProgramsTitleIsTheDefaultName)
{
    Arguments oArguments{"/opt/bin/daemon.bin"};
    Application oApplication;
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("daemon", oApplication.GetApplName());
    EXPECT_EQ("/opt/bin/daemon.ini", oApplication.IniFile());
}

TEST(KorApplication, AnEmptyNameAndAnEmptyIniFileAreDerivedToo)
{
    Arguments oArguments{"\\\\server\\share\\daemon.bin"};
    Application oApplication("", "");
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("daemon", oApplication.GetApplName());
    EXPECT_EQ("\\\\server\\share\\daemon.ini", oApplication.IniFile());
}

TEST(KorApplication, AGivenIniFileIsKept)
{
    Arguments oArguments{"/opt/bin/daemon.bin"};
    Application oApplication("/etc/gw.ini");
    oApplication.InitializeClass(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("/etc/gw.ini", oApplication.IniFile());
}

TEST(KorApplication, StartsWithoutAnyArguments)
{
    Application oApplication;
    EXPECT_EQ(7, oApplication.Start(0, nullptr));
    EXPECT_EQ("", oApplication.GetApplName());
    EXPECT_EQ("", oApplication.IniFile());
    EXPECT_TRUE(AllArguments(oApplication.CmdLine()).empty());
}

TEST(KorApplication, StartsWithACountButNoVector)
{
    Application oApplication;
    EXPECT_EQ(7, oApplication.Start(3, nullptr));
    EXPECT_EQ("", oApplication.GetCommandLine());
    EXPECT_TRUE(AllArguments(oApplication.CmdLine()).empty());
}

TEST(KorApplication, AProgramFileWithoutExtensionFailsTheStart)
{
    Arguments oArguments{"/opt/bin/daemon", "a"};
    Application oApplication;
    try {
        oApplication.Start(oArguments.Count(), oArguments.Vector());
        FAIL() << "no exception";
    } catch (const std::out_of_range& oFailure) {
        EXPECT_STREQ("basic_string::substr", oFailure.what());
    }
    EXPECT_EQ("", oApplication.m_strCalls);
    EXPECT_EQ("", oApplication.GetApplName());
    EXPECT_EQ("", oApplication.IniFile());
    EXPECT_EQ("a ", oApplication.GetCommandLine());
    EXPECT_EQ((std::vector<std::string>{"/opt/bin/daemon", "a"}),
              AllArguments(oApplication.CmdLine()));
}

TEST(KorApplication, ANullArgumentFailsTheStart)
{
    char szProgram[] = "daemon.bin";
    char* apszArguments[] = {szProgram, nullptr, nullptr};
    Application oApplication;
    EXPECT_THROW(oApplication.Start(2, apszArguments), std::logic_error);
    EXPECT_EQ("", oApplication.m_strCalls);
}

TEST(KorApplication, ANullProgramFailsTheStart)
{
    char* apszArguments[] = {nullptr};
    Application oApplication;
    EXPECT_THROW(oApplication.Start(0, apszArguments), std::logic_error);
    EXPECT_EQ("", oApplication.m_strCalls);
}

TEST(KorApplication, RunsItsStepsInOrder)
{
    Arguments oArguments{"daemon.bin", "-p", "4711", "file"};
    Application oApplication;
    EXPECT_EQ(7, oApplication.Start(oArguments.Count(), oArguments.Vector()));
    EXPECT_EQ("declare read initialize run finalize ", oApplication.m_strCalls);
}

TEST(KorApplication, WhatTheDeclaringPassTakesIsThereAgainForTheReadingPass)
{
    Arguments oArguments{"daemon.bin", "-p", "4711", "file"};
    Application oApplication;
    oApplication.Start(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ("4711", oApplication.m_strValue);
    EXPECT_EQ("file", oApplication.m_strPositional);
}

TEST(KorApplication, AFailedInitializeSkipsRunButNotFinalize)
{
    Arguments oArguments{"daemon.bin"};
    Application oApplication;
    oApplication.m_bInitializes = false;
    EXPECT_EQ(7, oApplication.Start(oArguments.Count(), oArguments.Vector()));
    EXPECT_EQ("declare read initialize finalize ", oApplication.m_strCalls);
}

TEST(KorApplication, AnExceptionLeavesStartWithoutFinalize)
{
    class Throwing : public Application
    {
    public:
        void Run() override { throw std::runtime_error("out of paper"); }
    };
    Arguments oArguments{"daemon.bin"};
    Throwing oApplication;
    EXPECT_THROW(oApplication.Start(oArguments.Count(), oArguments.Vector()), std::runtime_error);
    EXPECT_EQ("declare read initialize ", oApplication.m_strCalls);
}

TEST(KorApplication, TheBaseStepsSucceed)
{
    Arguments oArguments{"daemon.bin", "-x"};
    PlainApplication oApplication;
    EXPECT_TRUE(oApplication.Initialize());
    EXPECT_EQ(1, oApplication.Start(oArguments.Count(), oArguments.Vector()));
}

TEST(KorApplication, TheFirstOneConstructedIsTheApplicationOfTheProcess)
{
    EXPECT_EQ(nullptr, CKorBaseApplication::GetApplication());
    auto pFirst = std::make_unique<Application>();
    auto pSecond = std::make_unique<Application>();
    EXPECT_EQ(pFirst.get(), CKorBaseApplication::GetApplication());
    pSecond.reset();
    EXPECT_EQ(nullptr, CKorBaseApplication::GetApplication());
    pSecond = std::make_unique<Application>();
    EXPECT_EQ(pSecond.get(), CKorBaseApplication::GetApplication());
    pFirst.reset();
    EXPECT_EQ(nullptr, CKorBaseApplication::GetApplication());
}

TEST(KorApplication, TheNameCanBeSet)
{
    Application oApplication(nullptr, "gw");
    oApplication.SetApplName("meter");
    EXPECT_EQ("meter", oApplication.GetApplName());
    oApplication.SetApplName(nullptr);
    EXPECT_EQ("", oApplication.GetApplName());
}

TEST(KorApplication, TheStartTimeIsThatOfConstruction)
{
    const CKorUTCTime oBefore = CKorUTCTime::CurrentTime();
    Application oApplication;
    const CKorUTCTime oAfter = CKorUTCTime::CurrentTime();
    const CKorLocalTime* const pStart = &oApplication.GetStartZeit();
    const long long nUTCMilliseconds =
        pStart->GetLocaltime() -
        CKorLocalTime::GetCurrentTimezone() * static_cast<long long>(3600000);
    EXPECT_TRUE(pStart->IsTimeValid());
    EXPECT_GE(nUTCMilliseconds, oBefore.GetLocaltime());
    EXPECT_LE(nUTCMilliseconds, oAfter.GetLocaltime());

    const long long nAtConstruction = pStart->GetLocaltime();
    Arguments oArguments{"daemon.bin"};
    while (CKorUTCTime::CurrentTime().GetLocaltime() == nUTCMilliseconds) {
    }
    oApplication.Start(oArguments.Count(), oArguments.Vector());
    EXPECT_EQ(pStart, &oApplication.GetStartZeit());
    EXPECT_EQ(nAtConstruction, pStart->GetLocaltime());
}

TEST(KorApplication, AnExchangeWithoutApplicationIsEmpty)
{
    CKorCmdLineApplExchange oExchange;
    std::string strValue = "kept";
    EXPECT_FALSE(oExchange.GetParameter(nullptr, false, strValue));
    EXPECT_EQ("kept", strValue);
    oExchange.Initialize();
    EXPECT_TRUE(oExchange.IsInitialized());
}

TEST(KorApplication, AnExchangeCanBeInitializedAgain)
{
    Arguments oArguments{"daemon.bin", "a"};
    CKorCmdLine oCmdLine(oArguments.Count(), oArguments.Vector());
    Application oApplication;
    CKorCmdLineApplExchange oExchange(&oApplication, &oCmdLine);
    EXPECT_EQ("declare ", oApplication.m_strCalls);
    oExchange.Initialize();
    EXPECT_EQ("declare declare ", oApplication.m_strCalls);
    std::string strValue;
    EXPECT_TRUE(oExchange.GetParameter("", false, strValue));
    EXPECT_EQ("daemon.bin", strValue);
}

} // namespace
