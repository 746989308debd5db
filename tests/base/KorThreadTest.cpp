#include "base/KorThread.h"
#include "tests/support/Patience.h"
#include "tests/support/ThreadState.h"

#include <atomic>
#include <chrono>
#include <climits>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <thread>

namespace
{

/// Runs until it is asked to end and counts its runs.
class Worker : public CKorThread
{
public:
    explicit Worker(unsigned int nStackSize = 0) : CKorThread(nStackSize) {}
    ~Worker() override { Stop(); }

    void Run() override
    {
        ++m_nRuns;
        while (!IsTerminationRequested())
            Sleep(0, 1);
        m_nWork = m_nWork + 1; // plain on purpose: seeing THREAD_ENDED must make it visible
    }

    void WaitForState(int nState) const
    {
        while (GetState() != nState)
            Sleep(0, 1);
    }

    void Stop()
    {
        Terminate();
        WaitForState(THREAD_ENDED);
    }

    std::atomic<int> m_nRuns{0};
    int m_nWork = 0;
};

TEST(KorThread, ReportsStateThreeBeforeItsFirstStart)
{
    const CKorThread oThread(0);
    EXPECT_EQ(3, oThread.GetState());
    EXPECT_EQ(1, CKorThread::THREAD_STARTING);
    EXPECT_EQ(2, CKorThread::THREAD_RUNNING);
    EXPECT_EQ(3, CKorThread::THREAD_ENDED);
    EXPECT_FALSE(oThread.IsTerminationRequested());
}

TEST(KorThread, RunsUntilItIsAskedToEnd)
{
    Worker oWorker;
    ASSERT_TRUE(oWorker.Start());
    oWorker.WaitForState(CKorThread::THREAD_RUNNING);
    EXPECT_FALSE(oWorker.IsTerminationRequested());
    oWorker.Stop();
    EXPECT_TRUE(oWorker.IsTerminationRequested());
    EXPECT_EQ(3, oWorker.GetState());
    EXPECT_EQ(1, oWorker.m_nWork);
}

TEST(KorThread, StartOnARunningThreadChangesNothing)
{
    Worker oWorker;
    ASSERT_TRUE(oWorker.Start());
    oWorker.WaitForState(CKorThread::THREAD_RUNNING);
    EXPECT_FALSE(oWorker.Start());
    EXPECT_FALSE(oWorker.IsTerminationRequested());
    EXPECT_EQ(CKorThread::THREAD_RUNNING, oWorker.GetState());
    oWorker.Stop();
    EXPECT_EQ(1, oWorker.m_nRuns);
}

TEST(KorThread, StartsAnewAfterItsEnd)
{
    Worker oWorker;
    for (int nRound = 1; nRound <= 3; ++nRound) {
        ASSERT_TRUE(oWorker.Start());
        EXPECT_FALSE(oWorker.IsTerminationRequested());
        oWorker.WaitForState(CKorThread::THREAD_RUNNING);
        oWorker.Stop();
        EXPECT_EQ(nRound, oWorker.m_nWork);
    }
}

TEST(KorThread, ATerminationRequestRightAfterStartIsNotLost)
{
    Worker oWorker;
    for (int nRound = 0; nRound < 200; ++nRound) {
        ASSERT_TRUE(oWorker.Start());
        oWorker.Stop();
    }
    EXPECT_EQ(200, oWorker.m_nWork);
}

TEST(KorThread, InitializeRunsFirstAndCanRefuseTheRun)
{
    class Refusing : public CKorThread
    {
    public:
        Refusing() : CKorThread(0) {}
        bool Initialize() override
        {
            m_bInitialized = true;
            return false;
        }
        void Run() override { m_bRun = true; }
        bool m_bInitialized = false;
        bool m_bRun = false;
    };
    Refusing oThread;
    ASSERT_TRUE(oThread.Start());
    while (oThread.GetState() != CKorThread::THREAD_ENDED)
        CKorThread::Sleep(0, 1);
    EXPECT_TRUE(oThread.m_bInitialized);
    EXPECT_FALSE(oThread.m_bRun);
}

TEST(KorThread, TheDestructorEndsAndAwaitsTheThread)
{
    std::atomic<bool> bEnded{false};
    // Its members outlive the object, so Run() may go on while the destructor waits.
    class Outliving : public CKorThread
    {
    public:
        explicit Outliving(std::atomic<bool>& bFlag) : CKorThread(0), m_bFlag(bFlag) {}
        void Run() override
        {
            std::atomic<bool>& bFlag = m_bFlag;
            const int nDestroyer = m_nDestroyer;
            m_bReached = true;
            const CKorThread& oBase = *this;
            while (!oBase.IsTerminationRequested())
                Sleep(0, 1);
            EXPECT_TRUE(WaitUntil([nDestroyer] { return IsAsleep(nDestroyer); }));
            bFlag = true;
        }
        std::atomic<bool>& m_bFlag;
        const int m_nDestroyer = ThreadId();
        std::atomic<bool> m_bReached{false};
    };
    {
        Outliving oThread(bEnded);
        ASSERT_TRUE(oThread.Start());
        while (!oThread.m_bReached)
            CKorThread::Sleep(0, 1);
    }
    EXPECT_TRUE(bEnded);
}

/// The size of the stack that a thread gets that asked for so much.
size_t StackSize(unsigned int nAsked)
{
    class Measured : public CKorThread
    {
    public:
        explicit Measured(unsigned int nStackSize) : CKorThread(nStackSize) {}
        void Run() override
        {
            pthread_attr_t oAttributes;
            pthread_getattr_np(pthread_self(), &oAttributes);
            pthread_attr_getstacksize(&oAttributes, &m_nSize);
            pthread_attr_destroy(&oAttributes);
        }
        size_t m_nSize = 0;
    };
    Measured oThread(nAsked);
    EXPECT_TRUE(oThread.Start());
    while (oThread.GetState() != CKorThread::THREAD_ENDED)
        CKorThread::Sleep(0, 1);
    return oThread.m_nSize;
}

TEST(KorThread, ASmallStackSizeIsRoundedUp)
{
    for (const unsigned int nAsked : {1U, static_cast<unsigned int>(PTHREAD_STACK_MIN) + 1}) {
        EXPECT_GE(StackSize(nAsked), static_cast<size_t>(nAsked));
        EXPECT_LT(StackSize(nAsked), 4U * 1024U * 1024U);
    }
}

TEST(KorThread, TheStackHasTheSizeAskedFor)
{
    EXPECT_GE(StackSize(512 * 1024), 512U * 1024U);
    EXPECT_LT(StackSize(512 * 1024), 1024U * 1024U);
}

TEST(KorThread, WithoutASizeTheStackIsTheSystemsWhichIsNotItsSmallest)
{
    EXPECT_GT(StackSize(0), StackSize(1));
}

void IgnoreSignal(int) {}

TEST(KorThread, SleepIsNotCutShortBySignals)
{
    struct sigaction oAction = {};
    oAction.sa_handler = IgnoreSignal;
    struct sigaction oOldAction;
    ASSERT_EQ(0, sigaction(SIGALRM, &oAction, &oOldAction));
    const itimerval oEvery5Ms = {{0, 5000}, {0, 5000}};
    ASSERT_EQ(0, setitimer(ITIMER_REAL, &oEvery5Ms, nullptr));

    const auto oStart = std::chrono::steady_clock::now();
    CKorThread::Sleep(0, 60);
    const auto oSlept = std::chrono::steady_clock::now() - oStart;

    const itimerval oOff = {};
    setitimer(ITIMER_REAL, &oOff, nullptr);
    sigaction(SIGALRM, &oOldAction, nullptr);
    EXPECT_GE(oSlept, std::chrono::milliseconds(60));
}

TEST(KorThread, SleepAddsSecondsAndMilliseconds)
{
    const auto oStart = std::chrono::steady_clock::now();
    CKorThread::Sleep(1, 1050);
    EXPECT_GE(std::chrono::steady_clock::now() - oStart, std::chrono::milliseconds(2050));
}

} // namespace
