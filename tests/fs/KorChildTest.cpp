#include "fs/KorChild.h"

#include "tests/fs/ChildTest.h"
#include "tests/support/Patience.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <unistd.h>

namespace
{

TEST(KorChild, TellsHowTheProgramExited)
{
    CKorChild oChild;
    EXPECT_EQ(0, oChild.GetProcessID());
    EXPECT_EQ(-1, oChild.GetEndHandle());
    ASSERT_TRUE(oChild.Start(Shell("exit 7")));
    EXPECT_LT(0, oChild.GetProcessID());
    EXPECT_TRUE(oChild.Wait(0xFFFFFFFF));
    EXPECT_FALSE(oChild.IsRunning());
    EXPECT_EQ(7, oChild.GetExitStatus());
    EXPECT_EQ(0, oChild.GetEndSignal());
    EXPECT_LT(0, oChild.GetProcessID());
}

TEST(KorChild, TellsWhichSignalEndedTheProgram)
{
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start(Shell("kill -USR1 $$")));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(SIGUSR1, oChild.GetEndSignal());
}

TEST(KorChild, KnowsAProgramThatRuns)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start({"cat"}, oOptions));
    EXPECT_TRUE(oChild.IsRunning());
    EXPECT_FALSE(oChild.Wait(0));
    EXPECT_FALSE(oChild.Wait(20));
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(0, oChild.GetEndSignal());
    EXPECT_FALSE(oChild.Start({"true"}));
    EXPECT_EQ(EBUSY, oChild.GetLastError());
    EXPECT_TRUE(oChild.IsRunning());
    oChild.CloseInput();
    EXPECT_EQ(-1, oChild.GetInputHandle());
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(0, oChild.GetExitStatus());
}

TEST(KorChild, StartsAnewAfterTheEnd)
{
    CKorChild oChild;
    for (int nStatus = 0; nStatus < 5; ++nStatus) {
        ASSERT_TRUE(oChild.Start(Shell("exit " + std::to_string(nStatus))));
        EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
        EXPECT_EQ(nStatus, oChild.GetExitStatus());
    }
    EXPECT_FALSE(oChild.Start({"/no/such/program"}));
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(0, oChild.GetProcessID());
    EXPECT_EQ(-1, oChild.GetEndHandle());
}

TEST(KorChild, BeforeAStartNothingRunsAndNothingIsWaitedFor)
{
    CKorChild oChild;
    EXPECT_FALSE(oChild.IsRunning());
    EXPECT_FALSE(oChild.Wait(0xFFFFFFFF));
    EXPECT_EQ(ESRCH, oChild.GetLastError());
    errno = 0;
    EXPECT_FALSE(oChild.Signal(0));
    EXPECT_EQ(ESRCH, errno);
    errno = 0;
    EXPECT_FALSE(oChild.Stop(0));
    EXPECT_EQ(ESRCH, errno);
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(-1, oChild.GetInputHandle());
    EXPECT_EQ(-1, oChild.GetOutputHandle());
    EXPECT_EQ(-1, oChild.GetErrorHandle());
    oChild.CloseInput();
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorChild>);
    EXPECT_FALSE(std::is_copy_constructible_v<CKorChild>);
}

TEST(KorChildSignal, IsSentToTheProgram)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("trap 'exit 4' USR1; echo ready; while :; do sleep 0.01; done"),
                             oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_TRUE(oChild.Signal(0));
    EXPECT_FALSE(oChild.Signal(1000));
    EXPECT_EQ(EINVAL, oChild.GetLastError());
    EXPECT_TRUE(oChild.Signal(SIGUSR1));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(4, oChild.GetExitStatus());
    EXPECT_FALSE(oChild.Signal(SIGUSR1));
    EXPECT_EQ(ESRCH, oChild.GetLastError());
}

TEST(KorChildStop, AsksFirst)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("trap 'exit 6' TERM; echo ready; while :; do sleep 0.01; done"),
                             oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_TRUE(oChild.Stop(PATIENCE_MS));
    EXPECT_EQ(6, oChild.GetExitStatus());
    EXPECT_TRUE(oChild.Stop(0)) << "it has ended";
}

TEST(KorChildStop, KillsAfterTheGrace)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(
        oChild.Start(Shell("trap '' TERM; echo ready; while :; do sleep 0.01; done"), oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_TRUE(oChild.Stop(30));
    EXPECT_EQ(SIGKILL, oChild.GetEndSignal());
}

TEST(KorChildStop, EndsTheWholeGroupOfAProgramThatLeadsOne)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_bNewGroup = true;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("sleep 1000 & echo ready; wait"), oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_EQ(oChild.GetProcessID(), getpgid(oChild.GetProcessID()));
    EXPECT_TRUE(oChild.Stop(0));
    EXPECT_EQ("", ReadAll(oChild.GetOutputHandle())) << "nobody of the group holds the pipe";
}

TEST(KorChildStop, IsWhatTheDestructorDoes)
{
    pid_t nProcessID = 0;
    {
        CKorChild oChild;
        ASSERT_TRUE(oChild.Start(Shell("trap '' TERM; while :; do sleep 1; done")));
        nProcessID = oChild.GetProcessID();
        EXPECT_EQ(getpgrp(), getpgid(nProcessID));
    }
    EXPECT_FALSE(Exists(nProcessID));
}

TEST(KorChildStop, ComesFromTheSystemWhenTheStartingThreadEnds)
{
    CKorChild oChild;
    CKorChild oOther;
    std::thread([&] {
        Options oOptions;
        EXPECT_TRUE(oOther.Start({"sleep", "1000"}, oOptions));
        oOptions.m_bEndWithParent = true;
        EXPECT_TRUE(oChild.Start({"sleep", "1000"}, oOptions));
    }).join();
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(SIGTERM, oChild.GetEndSignal());
    EXPECT_TRUE(oOther.IsRunning());
}

} // namespace
