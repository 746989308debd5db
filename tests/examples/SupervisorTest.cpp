#include "tests/app/NotifySocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

namespace
{

bool Exists(const std::string& strFile)
{
    return access(strFile.c_str(), F_OK) == 0;
}

class Supervisor : public testing::Test
{
protected:
    /// Writes the settings: programs that each tell of their start in a file of their own.
    void WritePrograms(const std::vector<std::string>& vecNames, const std::string& strThen)
    {
        std::string strSettings = "[Programs]\n";
        for (const std::string& strName : vecNames)
            strSettings +=
                strName + "=sh -c 'echo $$ >>" + m_oDir.File(strName) + "; exec " + strThen + "'\n";
        WriteFile(m_strSettings, strSettings);
    }
    bool Started(const std::string& strName, unsigned int nTimes = 1) const
    {
        return WaitUntil([this, &strName, nTimes] { return Starts(strName).size() >= nTimes; });
    }
    std::vector<pid_t> Starts(const std::string& strName) const
    {
        std::vector<pid_t> vecProcesses;
        if (!Exists(m_oDir.File(strName)))
            return vecProcesses;
        const std::string strContent = ReadFile(m_oDir.File(strName));
        for (std::size_t nStart = 0; strContent.find('\n', nStart) != std::string::npos;
             nStart = strContent.find('\n', nStart) + 1)
            vecProcesses.push_back(std::stoi(strContent.substr(nStart)));
        return vecProcesses;
    }
    static bool IsGone(pid_t nProcess)
    {
        return WaitUntil([nProcess] { return kill(nProcess, 0) != 0; });
    }

    const ScratchDir m_oDir;
    const std::string m_strSettings = m_oDir.File("supervisor.ini");
};

TEST_F(Supervisor, StartsWhatEndedAgainAfterGrowingPauses)
{
    WritePrograms({"short"}, "false");
    ChildProcess oSupervisor({SUPERVISOR_PROGRAM, m_strSettings});
    ASSERT_TRUE(Started("short", 3));
    oSupervisor.Signal(SIGTERM);
    EXPECT_EQ(0, oSupervisor.Wait().nExitStatus);
    const std::string& strLog = oSupervisor.Wait().strErr;
    EXPECT_NE(std::string::npos, strLog.find("short: status 1, signal 0; again in 250 ms"));
    EXPECT_NE(std::string::npos, strLog.find("short: status 1, signal 0; again in 500 ms"));
}

TEST_F(Supervisor, EndsItsProgramsWithItself)
{
    WritePrograms({"one", "two"}, "sleep 1000");
    ChildProcess oSupervisor({SUPERVISOR_PROGRAM, m_strSettings});
    ASSERT_TRUE(Started("one") && Started("two"));
    oSupervisor.Signal(SIGINT);
    EXPECT_EQ(0, oSupervisor.Wait().nExitStatus);
    EXPECT_TRUE(IsGone(Starts("one").front()));
    EXPECT_TRUE(IsGone(Starts("two").front()));
}

TEST_F(Supervisor, AReloadTouchesOnlyWhatChanged)
{
    WritePrograms({"kept", "dropped"}, "sleep 1000");
    ChildProcess oSupervisor({SUPERVISOR_PROGRAM, m_strSettings});
    ASSERT_TRUE(Started("kept") && Started("dropped"));
    WritePrograms({"kept", "added"}, "sleep 1000");
    oSupervisor.Signal(SIGHUP);
    ASSERT_TRUE(Started("added"));
    EXPECT_TRUE(IsGone(Starts("dropped").front()));
    EXPECT_EQ(0, kill(Starts("kept").front(), 0));
    WritePrograms({"kept", "added"}, "sleep 1001");
    oSupervisor.Signal(SIGHUP);
    ASSERT_TRUE(Started("kept", 2));
    EXPECT_TRUE(IsGone(Starts("kept").front()));
}

TEST_F(Supervisor, TellsItsManager)
{
    const NotifySocket oManager(m_oDir.File("notify"));
    WritePrograms({"one", "two"}, "sleep 1000");
    ChildProcess oSupervisor({SUPERVISOR_PROGRAM, m_strSettings});
    EXPECT_EQ("STATUS=keeps 2 programs running", oManager.Receive());
    EXPECT_EQ("READY=1", oManager.Receive());
    WritePrograms({"one"}, "sleep 1000");
    oSupervisor.Signal(SIGHUP);
    EXPECT_EQ(0u, oManager.Receive().find("RELOADING=1"));
    EXPECT_EQ("STATUS=keeps 1 programs running", oManager.Receive());
    EXPECT_EQ("READY=1", oManager.Receive());
    oSupervisor.Signal(SIGTERM);
    EXPECT_EQ("STOPPING=1", oManager.Receive());
}

TEST_F(Supervisor, WithoutAFileItSaysHowItIsUsed)
{
    const ChildResult oResult = RunProgram({SUPERVISOR_PROGRAM});
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strErr.find("FILE")) << oResult.strErr;
    const ChildResult oHelp = RunProgram({SUPERVISOR_PROGRAM, "--help"});
    EXPECT_EQ(0, oHelp.nExitStatus);
    EXPECT_NE(std::string::npos, oHelp.strOut.find("[PIDFILE]")) << oHelp.strOut;
}

TEST_F(Supervisor, TellsItsVersion)
{
    const ChildResult oResult = RunProgram({SUPERVISOR_PROGRAM, "--version"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("Program supervisor, Version " TARVO_VERSION
              "\nCopyright (C) Quentor GmbH (www.quentor.example)\n",
              oResult.strOut);
}

TEST_F(Supervisor, TheScriptOfOldInitSystemsStartsReloadsAndStopsIt)
{
    const std::string strPidFile = m_oDir.File("pid");
    const auto Script = [this, &strPidFile](const char* pszCommand) {
        return RunProgram({"env", std::string("DAEMON=") + SUPERVISOR_PROGRAM,
                           "SETTINGS=" + m_strSettings, "PIDFILE=" + strPidFile, SUPERVISOR_SCRIPT,
                           pszCommand})
            .nExitStatus;
    };
    WritePrograms({"one"}, "sleep 1000");
    EXPECT_NE(0, Script("status"));
    EXPECT_EQ(0, Script("start"));
    ASSERT_TRUE(Started("one"));
    EXPECT_EQ(0, Script("status"));
    EXPECT_EQ(0, Script("start"));
    WritePrograms({"one", "two"}, "sleep 1000");
    EXPECT_EQ(0, Script("reload"));
    EXPECT_TRUE(Started("two"));
    EXPECT_EQ(0, Script("stop"));
    EXPECT_FALSE(Exists(strPidFile));
    EXPECT_TRUE(IsGone(Starts("one").front()));
    EXPECT_NE(0, Script("status"));
    EXPECT_EQ(0, Script("stop"));
    EXPECT_EQ(1u, Starts("one").size());
}

TEST_F(Supervisor, SystemdFindsNothingWrongWithItsUnit)
{
    std::string strUnit = ReadFile(SUPERVISOR_UNIT);
    const std::string strProgram = "/usr/bin/supervisor";
    const std::size_t nProgram = strUnit.find(strProgram);
    ASSERT_NE(std::string::npos, nProgram);
    strUnit.replace(nProgram, strProgram.size(), "/bin/true");
    WriteFile(m_oDir.File("supervisor.service"), strUnit);
    const ChildResult oResult =
        RunProgram({"systemd-analyze", "verify", m_oDir.File("supervisor.service")});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ(std::string::npos, oResult.strErr.find("supervisor.service")) << oResult.strErr;
}

} // namespace
