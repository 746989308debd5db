#include "fs/KorChild.h"

#include "event/KorEventLoop.h"
#include "tests/fs/ChildTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Confinement.h"
#include "tests/support/Patience.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

TEST(KorChildEnd, HandlesStayOpenUntilTheNextStart)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start({"echo", "late"}, oOptions));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    const int hOutput = oChild.GetOutputHandle();
    const int hEnd = oChild.GetEndHandle();
    EXPECT_EQ("late\n", ReadAll(hOutput));
    ASSERT_TRUE(oChild.Start({"true"}));
    EXPECT_EQ(-1, oChild.GetOutputHandle());
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_TRUE(fcntl(hOutput, F_GETFD) == -1 || hOutput == oChild.GetEndHandle());
    EXPECT_LE(0, hEnd);
}

TEST(KorChildEnd, IsToldToAnEventLoopWithItsStatus)
{
    CKorEventLoop oLoop;
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start(Shell("exit 9")));
    oLoop.WatchHandle(oChild.GetEndHandle(), CKorEventLoop::EVENT_READABLE,
                      [&](unsigned int) { oLoop.Stop(oChild.GetExitStatus()); });
    EXPECT_EQ(9, oLoop.Run());
}

TEST(KorChildEnd, IsCollectedWithoutBeingAskedFor)
{
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start({"true"}));
    const pid_t nProcessID = oChild.GetProcessID();
    EXPECT_TRUE(WaitUntil([&] { return !Exists(nProcessID); }));
}

TEST(KorChildEnd, LeavesTheProgramsOtherChildrenAlone)
{
    const pid_t nOther = fork();
    if (nOther == 0)
        _exit(42);
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start({"true"}));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    int nStatus = 0;
    EXPECT_EQ(nOther, waitpid(nOther, &nStatus, 0));
    EXPECT_EQ(42, WEXITSTATUS(nStatus));
}

TEST(KorChildEnd, IsKnownWithoutStatusWhenSigchldIsIgnored)
{
    ChildProcess oAlone([] {
        std::signal(SIGCHLD, SIG_IGN);
        CKorChild oChild;
        if (!oChild.Start(Shell("exit 3")) || !oChild.Wait(PATIENCE_MS))
            return 1;
        return oChild.GetExitStatus() == -1 && oChild.GetEndSignal() == 0 ? 0 : 2;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
}

TEST(KorChildEnd, IsKnownWhenSomebodyWaitsForAllChildren)
{
    ChildProcess oAlone([] {
        std::atomic<bool> bEnd{false};
        std::thread oThief([&] {
            while (!bEnd) {
                if (waitpid(-1, nullptr, 0) == -1)
                    std::this_thread::yield();
            }
        });
        int nResult = 0;
        for (int nStart = 0; nStart < 50 && nResult == 0; ++nStart) {
            CKorChild oChild;
            if (!oChild.Start(Shell("exit 3")) || !oChild.Wait(PATIENCE_MS))
                nResult = 1;
            else if (oChild.GetExitStatus() != 3 && oChild.GetExitStatus() != -1)
                nResult = 2;
        }
        bEnd = true;
        oThief.join();
        return nResult;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
}

TEST(KorChildEnd, IsNotReportedByAChildThatClosesEverything)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("exec 0<&- 1>&- 2>&-; while :; do sleep 1; done"), oOptions));
    EXPECT_EQ("", ReadAll(oChild.GetOutputHandle()));
    EXPECT_TRUE(oChild.IsRunning());
    EXPECT_FALSE(oChild.Wait(50));
    EXPECT_TRUE(oChild.Stop(0));
}

TEST(KorChildEnd, IsReportedWhileAGrandchildKeepsThePipes)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = oOptions.m_eOutput = oOptions.m_eError = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("exec 3<&0; cat <&3 & echo $!; exit 5"), oOptions));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(5, oChild.GetExitStatus());
    char acBuffer[32] = {};
    EXPECT_LT(0, read(oChild.GetOutputHandle(), acBuffer, sizeof acBuffer - 1));
    const pid_t nGrandchild = std::atoi(acBuffer);
    EXPECT_LT(1, nGrandchild);
    EXPECT_TRUE(Exists(nGrandchild));
    oChild.CloseInput();
    EXPECT_EQ("", ReadAll(oChild.GetOutputHandle())) << "the grandchild ends with its input";
}

} // namespace
