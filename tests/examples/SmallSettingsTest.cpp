// The small example programs about settings and files, run as their users run them.
#include "fs/KorWholeFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <signal.h>

namespace
{

class SmallSettingsExample : public testing::Test
{
protected:
    /// Runs a shell command in the scratch directory, $0 being the program.
    ChildResult InDir(const std::string& strProgram, const std::string& strCommand) const
    {
        return RunProgram(
            {"/bin/sh", "-c", "cd '" + m_oDir.Path() + "' && " + strCommand, strProgram});
    }

    const ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("gateway.ini");
};

TEST_F(SmallSettingsExample, TypedSettingsNamesTheWrongLine)
{
    WriteFile(m_strFile, "[Port]\nDevice=/dev/ttyAM1\n[Poll]\nInterval=abc\n");
    const ChildResult oWrong = RunProgram({TYPED_SETTINGS_PROGRAM, m_strFile});
    EXPECT_EQ("line 4: [Poll] Interval=abc is no time span; 500ms is used\n"
              "/dev/ttyAM1, 500 ms\n",
              oWrong.strOut);
    WriteFile(m_strFile, "[Poll]\nInterval=1.5s\n");
    EXPECT_EQ("/dev/ttyAM0, 1500 ms\n", RunProgram({TYPED_SETTINGS_PROGRAM, m_strFile}).strOut);
}

TEST_F(SmallSettingsExample, ReloadSettingsTakesGoodOnesAndKeepsThemWhenOthersAreBad)
{
    WriteFile(m_strFile, "[Poll]\nInterval=50\n");
    ChildProcess oProgram(
        {"/bin/sh", "-c", "cd '" + m_oDir.Path() + "' && exec \"$0\"", RELOAD_SETTINGS_PROGRAM});
    ASSERT_TRUE(oProgram.WaitForErrors("Interval=50 is used\n"));
    WriteFile(m_strFile, "[Poll]\nInterval=0\n");
    oProgram.Signal(SIGHUP);
    ASSERT_TRUE(oProgram.WaitForErrors("Interval=0 is none, the former one stays\n"));
    WriteFile(m_strFile, "[Poll]\nInterval=70\n");
    oProgram.Signal(SIGHUP);
    ASSERT_TRUE(oProgram.WaitForErrors("Interval=70 is used\n"));
    oProgram.Signal(SIGTERM);
    EXPECT_EQ(0, oProgram.Wait().nExitStatus);
    WriteFile(m_strFile, "[Poll]\nInterval=soon\n");
    EXPECT_EQ(1, InDir(RELOAD_SETTINGS_PROGRAM, "\"$0\"").nExitStatus);
}

TEST_F(SmallSettingsExample, ChangeSettingChangesOneValueOrNothing)
{
    WriteFile(m_strFile, "# by hand\n[Port]\nBaud = 9600   # slow\n");
    EXPECT_EQ(0,
              RunProgram({CHANGE_SETTING_PROGRAM, m_strFile, "Port", "Baud", "19200"}).nExitStatus);
    const std::string strChanged = "# by hand\n[Port]\nBaud = 19200   # slow\n";
    EXPECT_EQ(strChanged, ReadFile(m_strFile));
    const ChildResult oRefused =
        RunProgram({CHANGE_SETTING_PROGRAM, m_strFile, "Port", "Baud", "1#2"});
    EXPECT_EQ(1, oRefused.nExitStatus);
    EXPECT_NE(std::string::npos, oRefused.strOut.find("cannot be stored")) << oRefused.strOut;
    EXPECT_EQ(strChanged, ReadFile(m_strFile));
    EXPECT_EQ(2, RunProgram({CHANGE_SETTING_PROGRAM, m_strFile}).nExitStatus);
}

TEST_F(SmallSettingsExample, CheckSettingsNamesTheLines)
{
    WriteFile(m_strFile, "[Port]\nBaud=9600\nBaud=19200\nnonsense\n");
    const ChildResult oResult = RunProgram({CHECK_SETTINGS_PROGRAM, m_strFile});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ(0u, oResult.strOut.find("line 3: ")) << oResult.strOut;
    EXPECT_NE(std::string::npos, oResult.strOut.find("\nline 4: ")) << oResult.strOut;
    EXPECT_EQ(2, RunProgram({CHECK_SETTINGS_PROGRAM, m_oDir.File("missing")}).nExitStatus);
}

TEST_F(SmallSettingsExample, NoticeChangeShowsTheNewValue)
{
    WriteFile(m_strFile, "[Log]\nLevel=3\n");
    ChildProcess oProgram({NOTICE_CHANGE_PROGRAM, m_strFile});
    ASSERT_TRUE(oProgram.WaitForOutput("level 3\n"));
    WriteFile(m_strFile, "[Log]\nLevel=14\n");
    EXPECT_TRUE(oProgram.WaitForOutput("level 14\n"));
}

TEST_F(SmallSettingsExample, KeepStateCountsItsStarts)
{
    EXPECT_EQ("start 1\n", RunProgram({KEEP_STATE_PROGRAM, m_oDir.File("starts")}).strOut);
    EXPECT_EQ("start 2\n", RunProgram({KEEP_STATE_PROGRAM, m_oDir.File("starts")}).strOut);
    EXPECT_EQ("2", ReadFile(m_oDir.File("starts")));
    EXPECT_EQ(1, RunProgram({KEEP_STATE_PROGRAM, m_oDir.File("none/starts")}).nExitStatus);
}

TEST_F(SmallSettingsExample, WriteLogGoesOnInANewFileAfterTheOldOneWasMoved)
{
    ChildProcess oProgram(
        {"/bin/sh", "-c", "cd '" + m_oDir.Path() + "' && exec \"$0\"", WRITE_LOG_PROGRAM});
    const std::string strLog = m_oDir.File("gateway.log");
    const auto Holds = [](const std::string& strFile, const std::string& strText) {
        return WaitUntil([&] {
            std::string strContent;
            return KorReadFile(strFile.c_str(), strContent) &&
                   strContent.find(strText) != std::string::npos;
        });
    };
    ASSERT_TRUE(Holds(strLog, "debug: round 2\n"));
    ASSERT_EQ(0, rename(strLog.c_str(), m_oDir.File("moved").c_str()));
    oProgram.Signal(SIGHUP);
    EXPECT_TRUE(Holds(strLog, "debug: round "));
    oProgram.Signal(SIGTERM);
    EXPECT_EQ(0, oProgram.Wait().nExitStatus);
}

} // namespace
