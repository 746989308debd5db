// The small example programs about processes and daemons, run as their users run them.
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

namespace
{

TEST(SmallExample, RunProgramTakesOutputAndStatus)
{
    EXPECT_EQ("status 3, 11 bytes: some input\n\n",
              RunProgram({RUN_PROGRAM_PROGRAM, "sh", "-c", "cat; exit 3"}).strOut);
    const ChildResult oMissing = RunProgram({RUN_PROGRAM_PROGRAM, "no-such-program"});
    EXPECT_EQ(1, oMissing.nExitStatus);
    EXPECT_NE(std::string::npos, oMissing.strOut.find("No such file")) << oMissing.strOut;
}

TEST(SmallExample, WatchChildrenTellsOfEachEnd)
{
    const ChildResult oResult = RunProgram({WATCH_CHILDREN_PROGRAM, "exit 3", "kill -9 $$"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strOut.find("exit 3: status 3, signal 0\n"));
    EXPECT_NE(std::string::npos, oResult.strOut.find("kill -9 $$: status -1, signal 9\n"));
    EXPECT_EQ(2, RunProgram({WATCH_CHILDREN_PROGRAM}).nExitStatus);
}

TEST(SmallExample, PostResultBringsTheSumToTheLoop)
{
    EXPECT_EQ("sum 500500\n", RunProgram({POST_RESULT_PROGRAM}).strOut);
}

TEST(SmallExample, OneInstanceRefusesASecondOne)
{
    const ScratchDir oDir;
    const std::string strPidFile = oDir.File("pid");
    ChildProcess oFirst({ONE_INSTANCE_PROGRAM, strPidFile});
    ASSERT_TRUE(oFirst.WaitForOutput("runs\n"));
    const ChildResult oSecond = RunProgram({ONE_INSTANCE_PROGRAM, strPidFile});
    EXPECT_EQ(1, oSecond.nExitStatus);
    EXPECT_NE(std::string::npos,
              oSecond.strOut.find(", process " + std::to_string(oFirst.Id()) + "\n"))
        << oSecond.strOut;
    oFirst.Signal(SIGTERM);
    EXPECT_EQ(0, oFirst.Wait().nExitStatus);
    EXPECT_NE(0, access(strPidFile.c_str(), F_OK));
}

TEST(SmallExample, StartAtBootStaysWhereItIsOrGoesToTheBackground)
{
    ChildProcess oProgram({START_AT_BOOT_PROGRAM});
    ASSERT_TRUE(oProgram.WaitForErrors("notice: starts\n"));
    oProgram.Signal(SIGTERM);
    EXPECT_EQ(0, oProgram.Wait().nExitStatus);

    const ScratchDir oDir;
    const std::string strPidFile = oDir.File("pid");
    ASSERT_EQ(0, RunProgram({START_AT_BOOT_PROGRAM, "--pid-file", strPidFile}).nExitStatus);
    ASSERT_TRUE(WaitUntil(
        [&] { return access(strPidFile.c_str(), F_OK) == 0 && !ReadFile(strPidFile).empty(); }));
    ASSERT_EQ(0, kill(std::stoi(ReadFile(strPidFile)), SIGTERM));
    EXPECT_TRUE(WaitUntil([&] { return access(strPidFile.c_str(), F_OK) != 0; }));
}

TEST(SmallExample, SystemdFindsNothingWrongWithTheUnitThatStartsAtBoot)
{
    const ScratchDir oDir;
    std::string strUnit = ReadFile(START_AT_BOOT_UNIT);
    const std::string strProgram = "/usr/bin/start_at_boot";
    ASSERT_NE(std::string::npos, strUnit.find(strProgram));
    strUnit.replace(strUnit.find(strProgram), strProgram.size(), "/bin/true");
    WriteFile(oDir.File("boot.service"), strUnit);
    const ChildResult oResult =
        RunProgram({"systemd-analyze", "verify", oDir.File("boot.service")});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ(std::string::npos, oResult.strErr.find("boot.service")) << oResult.strErr;
}

} // namespace
