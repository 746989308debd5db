#include "event/KorEventLoop.h"

#include "tests/config/TestScale.h"
#include "tests/event/EventTestSupport.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ThreadState.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <pthread.h>
#include <signal.h>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace
{

using Loop = CKorEventLoop;

TEST(KorEventLoop, CanBeDerivedFromAndIsNotCopied)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<Loop>);
    EXPECT_FALSE(std::is_copy_constructible_v<Loop>);
    EXPECT_FALSE(std::is_copy_assignable_v<Loop>);
}

TEST(KorEventLoop, RunsUntilItIsStopped)
{
    Loop oLoop;
    oLoop.Post([&] { oLoop.Stop(7); });
    EXPECT_EQ(7, oLoop.Run());
    oLoop.Post([&] { oLoop.Stop(); });
    EXPECT_EQ(0, oLoop.Run());
}

TEST(KorEventLoop, KeepsAStopForTheNextRunAndOfSeveralTheLast)
{
    Loop oLoop;
    bool bRan = false;
    oLoop.Post([&] { bRan = true; });
    oLoop.Stop(1);
    oLoop.Stop(2);
    EXPECT_EQ(2, oLoop.Run());
    EXPECT_FALSE(bRan) << "the run returns at once";
    oLoop.Post([&] { oLoop.Stop(3); });
    EXPECT_EQ(3, oLoop.Run()) << "the former stops are used up";
    EXPECT_TRUE(bRan);
}

TEST(KorEventLoop, RunOnceLeavesAStopToTheNextRun)
{
    Loop oLoop;
    oLoop.Stop(4);
    EXPECT_FALSE(oLoop.RunOnce(PATIENCE_MS)) << "it does not wait";
    EXPECT_EQ(4, oLoop.Run());
}

TEST(KorEventLoop, IsLeftAfterTheHandlerThatStopsIt)
{
    Loop oLoop;
    const HandlePair oPipe;
    oPipe.Send("x");
    int nLate = 0;
    oLoop.Post([&] { oLoop.Stop(1); });
    oLoop.Post([&] {
        ++nLate;
        oLoop.Stop(2);
    });
    oLoop.CallAfter(0, [&] { ++nLate; });
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) { ++nLate; });
    EXPECT_EQ(1, oLoop.Run());
    EXPECT_EQ(0, nLate);
    EXPECT_EQ(2, oLoop.Run());
    EXPECT_EQ(1, nLate) << "what was ready stayed for the next run";
}

TEST(KorEventLoop, CanBeStoppedByAnotherThreadWhileItWaits)
{
    Loop oLoop;
    std::thread oThread([&] { oLoop.Stop(5); });
    EXPECT_EQ(5, oLoop.Run());
    oThread.join();
}

Loop* s_pStopped = nullptr;

TEST(KorEventLoop, CanBeStoppedByASignalHandlerThatInterruptsNothing)
{
    Loop oLoop;
    s_pStopped = &oLoop;
    struct sigaction oAction = {};
    oAction.sa_handler = [](int) { s_pStopped->Stop(6); };
    struct sigaction oFormer;
    ASSERT_EQ(0, sigaction(SIGUSR1, &oAction, &oFormer));
    oLoop.CallAfter(1, [] { raise(SIGUSR1); });
    EXPECT_EQ(6, oLoop.Run());
    oLoop.CallAfter(PATIENCE_MS, [] { ADD_FAILURE() << "nobody woke the loop"; });
    const pthread_t oSelf = pthread_self();
    const int nSelf = ThreadId();
    std::thread oThread([&] {
        EXPECT_TRUE(WaitUntil([nSelf] { return IsAsleep(nSelf); }));
        pthread_kill(oSelf, SIGUSR1);
    });
    EXPECT_EQ(6, oLoop.Run());
    oThread.join();
    EXPECT_EQ(0, sigaction(SIGUSR1, &oFormer, nullptr));
}

TEST(KorEventLoop, RefusesToRunInAHandlerOrOnASecondThread)
{
    Loop oLoop;
    oLoop.Post([&] {
        errno = 0;
        EXPECT_EQ(-1, oLoop.Run());
        EXPECT_EQ(EBUSY, errno);
        errno = 0;
        EXPECT_FALSE(oLoop.RunOnce(0));
        EXPECT_EQ(EBUSY, errno);
        std::thread([&] {
            errno = 0;
            EXPECT_EQ(-1, oLoop.Run());
            EXPECT_EQ(EBUSY, errno);
        }).join();
        oLoop.Stop(8);
    });
    EXPECT_EQ(8, oLoop.Run());
}

TEST(KorEventLoop, RunsPostedCallsInOrder)
{
    Loop oLoop;
    std::vector<int> vecOrder;
    for (int nCall = 0; nCall < 5; ++nCall)
        EXPECT_TRUE(oLoop.Post([&vecOrder, nCall] { vecOrder.push_back(nCall); }));
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), vecOrder);
    EXPECT_FALSE(oLoop.RunOnce(0));
}

TEST(KorEventLoop, RunsWhatAPostedCallPostsARoundLater)
{
    Loop oLoop;
    int nCalls = 0;
    std::function<void()> fnAgain = [&] {
        ++nCalls;
        oLoop.Post(fnAgain);
    };
    oLoop.Post(fnAgain);
    oLoop.RunOnce(0);
    EXPECT_EQ(1, nCalls);
    oLoop.RunOnce(0);
    EXPECT_EQ(2, nCalls);
}

TEST(KorEventLoop, KeepsTheOrderOfEachThreadThatPosts)
{
    constexpr int THREADS = 4;
    constexpr int CALLS = 2000;
    Loop oLoop;
    std::vector<int> vecLast(THREADS, -1);
    int nCalls = 0;
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < THREADS; ++nThread) {
        vecThreads.emplace_back([&, nThread] {
            for (int nCall = 0; nCall < CALLS; ++nCall) {
                oLoop.Post([&, nThread, nCall] {
                    EXPECT_EQ(nCall - 1, vecLast[static_cast<size_t>(nThread)]);
                    vecLast[static_cast<size_t>(nThread)] = nCall;
                    if (++nCalls == THREADS * CALLS)
                        oLoop.Stop();
                });
            }
        });
    }
    EXPECT_EQ(0, oLoop.Run());
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(THREADS * CALLS, nCalls);
}

TEST(KorEventLoop, NeverMissesAPostOfAThreadThatAnswersEachCall)
{
    constexpr int CALLS = 40000 / TEST_SCALE;
    Loop oLoop;
    std::atomic<int> nSeen{0};
    std::thread oThread([&] {
        for (int nCall = 1; nCall <= CALLS; ++nCall) {
            oLoop.Post([&] { ++nSeen; });
            while (nSeen != nCall)
                std::this_thread::yield();
        }
        oLoop.Stop();
    });
    EXPECT_EQ(0, oLoop.Run());
    oThread.join();
}

TEST(KorEventLoop, RefusesEmptyHandlers)
{
    Loop oLoop;
    const HandlePair oPipe;
    const auto ExpectInvalid = [](bool bFailed) {
        EXPECT_TRUE(bFailed);
        EXPECT_EQ(EINVAL, errno);
        errno = 0;
    };
    errno = 0;
    ExpectInvalid(!oLoop.Post(nullptr));
    ExpectInvalid(oLoop.CallAfter(1, nullptr) == -1);
    ExpectInvalid(oLoop.CallEvery(1, nullptr) == -1);
    ExpectInvalid(oLoop.CallOnSignal(SIGUSR1, nullptr) == -1);
    ExpectInvalid(oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, nullptr) == -1);
}

TEST(KorEventLoop, KnowsNoTicketsThatItDidNotGive)
{
    Loop oLoop;
    for (const int nTicket : {0, -1, 1, 17, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_FALSE(oLoop.IsActive(nTicket));
        errno = 0;
        EXPECT_FALSE(oLoop.Cancel(nTicket));
        EXPECT_EQ(EINVAL, errno);
        EXPECT_FALSE(oLoop.SetEvents(nTicket, Loop::EVENT_READABLE));
    }
}

TEST(KorEventLoop, LetsExceptionsPassAndGoesOnWithWhatIsLeft)
{
    Loop oLoop;
    const HandlePair oPipe;
    oPipe.Send("x");
    int nPosted = 0;
    int nRead = 0;
    oLoop.Post([] { throw std::runtime_error("first"); });
    oLoop.Post([&] { ++nPosted; });
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) {
        if (++nRead == 1)
            throw std::runtime_error("second");
        oLoop.Stop(9);
    });
    EXPECT_THROW(oLoop.Run(), std::runtime_error);
    EXPECT_EQ(0, nPosted);
    EXPECT_THROW(oLoop.Run(), std::runtime_error);
    EXPECT_EQ(1, nPosted);
    EXPECT_EQ(9, oLoop.Run());
}

/// Catches what a call throws, and then waits with an object that a cancellation has to destroy.
void* CatchAndWait(void*)
{
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    Loop oLoop;
    oLoop.Post([] { throw std::runtime_error("thrown"); });
    EXPECT_THROW(oLoop.Run(), std::runtime_error);
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    for (;;)
        pause();
}

TEST(KorEventLoop, AThreadThatCaughtWhatACallThrewCanStillBeCancelled)
{
    pthread_t hThread;
    ASSERT_EQ(0, pthread_create(&hThread, nullptr, CatchAndWait, nullptr));
    ASSERT_EQ(0, pthread_cancel(hThread));
    void* pResult = nullptr;
    ASSERT_EQ(0, pthread_join(hThread, &pResult));
    EXPECT_EQ(PTHREAD_CANCELED, pResult);
}

TEST(KorEventLoop, ReleasesWhatAHandlerHoldsAfterItReturned)
{
    Loop oLoop;
    auto pHeld = std::make_shared<int>(1);
    const std::weak_ptr<int> pSeen = pHeld;
    int nTicket = 0;
    nTicket = oLoop.CallEvery(1, [&oLoop, &nTicket, &pSeen, pHeld] {
        oLoop.Cancel(nTicket);
        for (int nMore = 0; nMore < 100; ++nMore)
            oLoop.CallAfter(PATIENCE_MS, [] {});
        EXPECT_FALSE(pSeen.expired());
        EXPECT_EQ(1, *pHeld);
    });
    pHeld.reset();
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_TRUE(pSeen.expired());
}

/// Cancels a ticket when it is destroyed, as sessions do that a handler owns.
struct Session
{
    Loop& oLoop;
    int nTicket;
    ~Session() { oLoop.Cancel(nTicket); }
};

TEST(KorEventLoop, WhatHandlersHoldMayUseTheLoopWhileItIsDestroyed)
{
    int nCalls = 0;
    {
        Loop oLoop;
        const int nOther = oLoop.CallAfter(PATIENCE_MS, [&] { ++nCalls; });
        const auto pFirst = std::make_shared<Session>(Session{oLoop, nOther});
        oLoop.CallAfter(PATIENCE_MS, [pFirst] {});
        const auto pSecond = std::make_shared<Session>(Session{oLoop, nOther});
        oLoop.Post([pSecond] {});
        const auto pThird = std::make_shared<Session>(Session{oLoop, nOther});
        oLoop.CallOnSignal(SIGUSR2, [pThird] {});
    }
    EXPECT_EQ(0, nCalls);
}

TEST(KorEventLoop, LeavesNoHandleOpenAndHandsNoneOn)
{
    const int hBefore = dup(0);
    close(hBefore);
    {
        Loop oLoop;
        for (int hOwn = hBefore; hOwn < hBefore + 2; ++hOwn)
            EXPECT_EQ(FD_CLOEXEC, fcntl(hOwn, F_GETFD));
    }
    EXPECT_EQ(-1, fcntl(hBefore, F_GETFD));
    EXPECT_EQ(-1, fcntl(hBefore + 1, F_GETFD));
}

TEST(KorEventLoop, IsNotToldWhatAForkedProcessDoes)
{
    Loop oLoop;
    const HandlePair oPipe;
    int nCalls = 0;
    const int nTicket =
        oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) { ++nCalls; });
    ChildProcess oChild([&] {
        oLoop.Post([&] { ++nCalls; });
        oLoop.Cancel(nTicket);
        oLoop.Stop(3);
        return oLoop.Run();
    });
    EXPECT_EQ(3, oChild.Wait().nExitStatus);
    EXPECT_FALSE(oLoop.RunOnce(0));
    oPipe.Send("x");
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS)) << "the child took the handle away";
    EXPECT_EQ(1, nCalls);
}

TEST(KorEventLoop, GoesOnInAForkedProcess)
{
    Loop oLoop;
    const HandlePair oPipe;
    int nEvents = 0;
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) {
        oPipe.Receive();
        ++nEvents;
    });
    oLoop.CallEvery(5, [&] { ++nEvents; });
    oLoop.CallOnSignal(SIGUSR1, [&] { oLoop.Stop(nEvents >= 2 ? 11 : 12); });
    ChildProcess oChild([&] {
        oPipe.Send("x");
        while (nEvents < 2)
            oLoop.RunOnce(PATIENCE_MS);
        raise(SIGUSR1);
        return oLoop.Run();
    });
    EXPECT_EQ(11, oChild.Wait().nExitStatus);
    EXPECT_EQ(0, nEvents);
}

TEST(KorEventLoop, IsWokenUpInAForkedProcess)
{
    Loop oLoop;
    ChildProcess oChild([&] {
        std::thread oOther([&oLoop, nLoop = ThreadId()] {
            WaitUntil([nLoop] { return IsAsleep(nLoop); });
            oLoop.Post([&oLoop] { oLoop.Stop(11); });
        });
        const int nResult = oLoop.Run();
        oOther.join();
        return nResult;
    });
    EXPECT_EQ(11, oChild.Wait().nExitStatus);
}

} // namespace
