#include "tests/event/EventTestSupport.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ThreadState.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace
{

using Loop = CKorEventLoop;

using Action = void (*)(int);

Action ActionOf(int nSignal)
{
    struct sigaction oAction;
    EXPECT_EQ(0, sigaction(nSignal, nullptr, &oAction));
    return oAction.sa_handler;
}

TEST(KorEventSignal, IsHandledOnTheLoopsThread)
{
    Loop oLoop;
    const std::thread::id oLoopThread = std::this_thread::get_id();
    oLoop.CallOnSignal(SIGUSR1, [&] {
        EXPECT_EQ(oLoopThread, std::this_thread::get_id());
        oLoop.Stop(1);
    });
    std::thread oThread([] { raise(SIGUSR1); });
    EXPECT_EQ(1, oLoop.Run());
    oThread.join();
}

TEST(KorEventSignal, IsToldToEachTicketAndOnlyWhenItCame)
{
    Loop oLoop;
    std::vector<int> vecCalls(3, 0);
    oLoop.CallOnSignal(SIGUSR1, [&] { ++vecCalls[0]; });
    const int nSecond = oLoop.CallOnSignal(SIGUSR1, [&] { ++vecCalls[1]; });
    oLoop.CallOnSignal(SIGUSR2, [&] { ++vecCalls[2]; });
    EXPECT_FALSE(oLoop.RunOnce(0));
    raise(SIGUSR1);
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ((std::vector<int>{1, 1, 0}), vecCalls);
    EXPECT_TRUE(oLoop.Cancel(nSecond));
    raise(SIGUSR1);
    raise(SIGUSR2);
    RunUntil(oLoop, [&] { return vecCalls == std::vector<int>{2, 1, 1}; });
    EXPECT_FALSE(oLoop.RunOnce(0));
}

TEST(KorEventSignal, IsToldToTheRestInTheNextRunWhenTheRoundIsLeft)
{
    Loop oLoop;
    std::vector<int> vecCalls(2, 0);
    for (int& rnCalls : vecCalls) {
        oLoop.CallOnSignal(SIGUSR1, [&] {
            ++rnCalls;
            oLoop.Stop();
        });
    }
    raise(SIGUSR1);
    EXPECT_EQ(0, oLoop.Run());
    EXPECT_EQ((std::vector<int>{1, 0}), vecCalls);
    EXPECT_EQ(0, oLoop.Run());
    EXPECT_EQ((std::vector<int>{1, 1}), vecCalls);
    EXPECT_FALSE(oLoop.RunOnce(0));
}

TEST(KorEventSignal, AHandlerThatRaisesItsSignalLeavesTimeToTheOthers)
{
    Loop oLoop;
    int nOthers = 0;
    oLoop.CallOnSignal(SIGUSR1, [] { raise(SIGUSR1); });
    raise(SIGUSR1);
    oLoop.Post([&] { ++nOthers; });
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(1, nOthers);
}

TEST(KorEventSignal, TheFormerActionComesBackWithTheLastTicket)
{
    const Action fnFormer = signal(SIGUSR1, SIG_IGN);
    {
        Loop oLoop;
        const int nFirst = oLoop.CallOnSignal(SIGUSR1, [] {});
        const int nSecond = oLoop.CallOnSignal(SIGUSR1, [] {});
        EXPECT_NE(SIG_IGN, ActionOf(SIGUSR1));
        EXPECT_TRUE(oLoop.Cancel(nFirst));
        EXPECT_NE(SIG_IGN, ActionOf(SIGUSR1));
        EXPECT_TRUE(oLoop.Cancel(nSecond));
        EXPECT_EQ(SIG_IGN, ActionOf(SIGUSR1));
        EXPECT_FALSE(oLoop.Cancel(nSecond));
        oLoop.CallOnSignal(SIGUSR1, [] {});
        EXPECT_NE(SIG_IGN, ActionOf(SIGUSR1));
    }
    EXPECT_EQ(SIG_IGN, ActionOf(SIGUSR1));
    signal(SIGUSR1, fnFormer);
}

TEST(KorEventSignal, BelongsToOneLoopAtATime)
{
    Loop oFirst;
    Loop oSecond;
    const int nTicket = oFirst.CallOnSignal(SIGUSR1, [] {});
    errno = 0;
    EXPECT_EQ(-1, oSecond.CallOnSignal(SIGUSR1, [] {}));
    EXPECT_EQ(EBUSY, errno);
    EXPECT_TRUE(oFirst.Cancel(nTicket));
    int nCalls = 0;
    EXPECT_LT(0, oSecond.CallOnSignal(SIGUSR1, [&] { ++nCalls; }));
    raise(SIGUSR1);
    EXPECT_FALSE(oFirst.RunOnce(0));
    EXPECT_TRUE(oSecond.RunOnce(PATIENCE_MS));
    EXPECT_EQ(1, nCalls);
}

TEST(KorEventSignal, MustBeOneThatCanBeCaught)
{
    Loop oLoop;
    for (const int nSignal : {0, -1, SIGKILL, SIGSTOP, 65, 128, 0x7FFFFFFF}) {
        errno = 0;
        EXPECT_EQ(-1, oLoop.CallOnSignal(nSignal, [] {})) << nSignal;
        EXPECT_EQ(EINVAL, errno) << nSignal;
    }
    EXPECT_LT(0, oLoop.CallOnSignal(SIGRTMAX, [] {}));
}

TEST(KorEventSignal, OfTheTimeBeforeIsNotTold)
{
    Loop oLoop;
    const int nTicket = oLoop.CallOnSignal(SIGUSR1, [] {});
    raise(SIGUSR1);
    EXPECT_TRUE(oLoop.Cancel(nTicket));
    oLoop.CallOnSignal(SIGUSR1, [] {});
    EXPECT_FALSE(oLoop.RunOnce(0));
}

TEST(KorEventSignal, LeavesErrnoAsItIs)
{
    Loop oLoop;
    oLoop.CallOnSignal(SIGUSR1, [] {});
    const pthread_t oLoopThread = pthread_self();
    oLoop.Post([&] {
        errno = 4711;
        raise(SIGUSR1);
        EXPECT_EQ(4711, errno);
        static_cast<void>(oLoopThread);
    });
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
}

TEST(KorEventSignal, DoesNotInterruptTheProgramsCalls)
{
    Loop oLoop;
    oLoop.CallOnSignal(SIGUSR1, [] {});
    const HandlePair oPipe;
    const pthread_t oReader = pthread_self();
    const int nReader = ThreadId();
    std::thread oThread([&] {
        for (int nSignal = 0; nSignal < 20; ++nSignal) {
            EXPECT_TRUE(WaitUntil([nReader] { return IsAsleep(nReader); }));
            pthread_kill(oReader, SIGUSR1);
        }
        oPipe.Send("x");
    });
    EXPECT_EQ("x", oPipe.Receive());
    oThread.join();
}

TEST(KorEventSignal, AForkedProcessTellsNothing)
{
    Loop oLoop;
    int nCalls = 0;
    oLoop.CallOnSignal(SIGUSR1, [&] { ++nCalls; });
    ChildProcess oChild([] {
        for (int nSignal = 0; nSignal < 10; ++nSignal)
            raise(SIGUSR1);
        return 0;
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_EQ(0, nCalls);
}

// The child runs in this process's memory.
TEST(KorEventSignal, AChildOfVforkTellsNothing)
{
    Loop oLoop;
    int nCalls = 0;
    oLoop.CallOnSignal(SIGUSR1, [&] { ++nCalls; });
    const pid_t nChild = vfork();
    if (nChild == 0) {
        kill(getpid(), SIGUSR1);
        _exit(0);
    }
    waitpid(nChild, nullptr, 0);
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_EQ(0, nCalls);
}

TEST(KorEventSignal, MayComeOnAnyThreadWhileTicketsComeAndGo)
{
    const Action fnFormer = signal(SIGUSR1, SIG_IGN);
    std::atomic<bool> bEnd{false};
    std::thread oThread([&] {
        while (!bEnd)
            raise(SIGUSR1);
    });
    int nCalls = 0;
    for (int nLoop = 0; nLoop < 300; ++nLoop) {
        Loop oLoop;
        oLoop.CallOnSignal(SIGUSR1, [&] { ++nCalls; });
        EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    }
    bEnd = true;
    oThread.join();
    EXPECT_LE(300, nCalls);
    signal(SIGUSR1, fnFormer);
}

TEST(KorEventSignal, NeverLosesTheLastOne)
{
    Loop oLoop;
    std::atomic<int> nSeen{0};
    oLoop.CallOnSignal(SIGUSR1, [&] { ++nSeen; });
    std::thread oThread([&] {
        for (int nSignal = 1; nSignal <= 2000; ++nSignal) {
            raise(SIGUSR1);
            while (nSeen != nSignal)
                std::this_thread::yield();
        }
        oLoop.Stop();
    });
    EXPECT_EQ(0, oLoop.Run());
    oThread.join();
}

} // namespace
