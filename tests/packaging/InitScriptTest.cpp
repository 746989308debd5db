#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <signal.h>
#include <thread>
#include <unistd.h>

namespace
{

/// The script for BusyBox's init with the gateway and its installed settings, all paths moved into
/// a folder of the test.
class InitScript : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string strSettings = ReadFile(SERVICE_FOLDER "/gateway.ini");
        for (const std::string strFolder : {"/run/tarvo-gateway", "/var/lib/tarvo-gateway"}) {
            for (std::size_t nPlace = strSettings.find(strFolder); nPlace != std::string::npos;
                 nPlace = strSettings.find(strFolder))
                strSettings.replace(nPlace, strFolder.size(), m_oDir.File("run"));
        }
        WriteFile(m_strSettings, strSettings);
    }
    void TearDown() override { Script("stop"); }

    ChildResult Script(const char* pszCommand) const
    {
        return RunProgram({"env", "DAEMON=" + m_strDaemon, "SETTINGS=" + m_strSettings,
                           "RUN=" + m_oDir.File("run"), "STATE=" + m_oDir.File("state"),
                           BUSYBOX_PROGRAM, "sh", SERVICE_FOLDER "/S50gateway", pszCommand});
    }
    pid_t Process() const { return std::stoi(ReadFile(m_strNumber)); }
    static bool Becomes(const std::function<bool()>& fnTrue)
    {
        const auto oDeadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!fnTrue() && std::chrono::steady_clock::now() < oDeadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return fnTrue();
    }
    static bool BecomesGone(pid_t nProcess)
    {
        return Becomes([nProcess] { return kill(nProcess, 0) != 0; });
    }

    const ScratchDir m_oDir;
    const std::string m_strSettings = m_oDir.File("gateway.ini");
    const std::string m_strNumber = m_oDir.File("run/service.pid");
    std::string m_strDaemon = GATEWAY_PROGRAM;
};

TEST_F(InitScript, StartsAndStopsTheDaemon)
{
    EXPECT_NE(0, Script("status").nExitStatus);
    EXPECT_EQ("Starting gateway: OK\n", Script("start").strOut);
    const pid_t nProcess = Process();
    EXPECT_EQ(0, kill(nProcess, 0));
    EXPECT_EQ(0, Script("status").nExitStatus);
    const std::string strOwnNumber = m_oDir.File("run/gateway.pid");
    ASSERT_TRUE(Becomes([&] { return access(strOwnNumber.c_str(), F_OK) == 0; }));
    EXPECT_EQ(nProcess, std::stoi(ReadFile(strOwnNumber)));
    EXPECT_EQ("Stopping gateway: OK\n", Script("stop").strOut);
    EXPECT_TRUE(BecomesGone(nProcess));
    EXPECT_NE(0, access(m_strNumber.c_str(), F_OK));
    EXPECT_NE(0, Script("status").nExitStatus);
    EXPECT_EQ(0, Script("stop").nExitStatus);
}

TEST_F(InitScript, ASecondStartKeepsTheFirstDaemon)
{
    ASSERT_EQ(0, Script("start").nExitStatus);
    const pid_t nProcess = Process();
    EXPECT_EQ(0, Script("start").nExitStatus);
    EXPECT_EQ(nProcess, Process());
}

TEST_F(InitScript, RestartBringsAnotherProcess)
{
    ASSERT_EQ(0, Script("start").nExitStatus);
    const pid_t nProcess = Process();
    EXPECT_EQ("Stopping gateway: OK\nStarting gateway: OK\n", Script("restart").strOut);
    EXPECT_TRUE(BecomesGone(nProcess));
    EXPECT_EQ(0, Script("status").nExitStatus);
}

TEST_F(InitScript, AReloadKeepsTheProcess)
{
    EXPECT_NE(0, Script("reload").nExitStatus);
    ASSERT_EQ(0, Script("start").nExitStatus);
    const pid_t nProcess = Process();
    EXPECT_EQ("Reloading gateway: OK\n", Script("reload").strOut);
    EXPECT_EQ(0, Script("status").nExitStatus);
    EXPECT_EQ(nProcess, Process());
}

TEST_F(InitScript, SaysWhatIsWrongWithTheSettings)
{
    WriteFile(m_strSettings, "[NoSuchSection]\nNoSuchOption=1\n");
    const ChildResult oResult = Script("start");
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("Starting gateway: FAIL\n", oResult.strOut);
    EXPECT_NE(std::string::npos, oResult.strErr.find("NoSuchSection")) << oResult.strErr;
}

TEST_F(InitScript, AnotherProgramThatHasTheOldNumberIsLeftAlone)
{
    ChildProcess oOther({"sleep", "1000"});
    ASSERT_EQ(0, RunProgram({"mkdir", m_oDir.File("run")}).nExitStatus);
    WriteFile(m_strNumber, std::to_string(oOther.Id()));
    EXPECT_NE(0, Script("status").nExitStatus);
    EXPECT_EQ(0, Script("stop").nExitStatus);
    EXPECT_TRUE(oOther.IsRunning());
    EXPECT_EQ(0, Script("start").nExitStatus);
    EXPECT_NE(oOther.Id(), Process());
}

TEST_F(InitScript, ADaemonThatDoesNotEndIsKilled)
{
    m_strDaemon = m_oDir.File("stubborn");
    WriteFile(m_strDaemon,
              "#!/bin/sh\n[ \"$1\" = --check ] && exit\ntrap '' TERM\nwhile :; do sleep 1; done\n");
    ASSERT_EQ(0, RunProgram({"chmod", "+x", m_strDaemon}).nExitStatus);
    ASSERT_EQ(0, Script("start").nExitStatus);
    const pid_t nProcess = Process();
    Script("stop");
    EXPECT_TRUE(BecomesGone(nProcess));
}

TEST_F(InitScript, SaysHowItIsUsed)
{
    const ChildResult oResult = Script("jump");
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strErr.find("start|stop|restart|reload|status"));
}

} // namespace
