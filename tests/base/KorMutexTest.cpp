#include "base/KorMutex.h"
#include "tests/support/Patience.h"
#include "tests/support/ThreadState.h"

#include <array>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

TEST(KorMutex, IsTakenAtOnceWhenFree)
{
    CKorMutex oMutex;
    EXPECT_TRUE(oMutex.Lock(0));
    oMutex.Unlock();
    EXPECT_TRUE(oMutex.Lock(CKorMutex::WAIT_FOREVER));
}

TEST(KorMutex, IsRefusedWhileHeld)
{
    CKorMutex oMutex;
    ASSERT_TRUE(oMutex.Lock(0));
    EXPECT_FALSE(oMutex.Lock(0));
    oMutex.Unlock();
    EXPECT_TRUE(oMutex.Lock(0));
}

TEST(KorMutex, IsNotRecursive)
{
    CKorMutex oMutex;
    ASSERT_TRUE(oMutex.Lock(CKorMutex::WAIT_FOREVER));
    EXPECT_FALSE(oMutex.Lock(1));
}

TEST(KorMutex, TimesOutNoEarlierThanAsked)
{
    CKorMutex oMutex;
    ASSERT_TRUE(oMutex.Lock(0));
    const auto oStart = Clock::now();
    EXPECT_FALSE(oMutex.Lock(30));
    EXPECT_GE(Clock::now() - oStart, milliseconds(30));
}

TEST(KorMutex, UnlockLetsAWaitingThreadGoOn)
{
    CKorMutex oMutex;
    ASSERT_TRUE(oMutex.Lock(0));
    std::atomic<int> nWaiter(0);
    std::atomic<bool> bTaken(false);
    std::thread oWaiter([&] {
        nWaiter = ThreadId();
        bTaken = oMutex.Lock(CKorMutex::WAIT_FOREVER);
    });
    ASSERT_TRUE(WaitUntil([&] { return nWaiter != 0 && IsAsleep(nWaiter); }));
    oMutex.Unlock();
    ASSERT_TRUE(WaitUntil([&] { return bTaken.load(); }));
    oWaiter.join();
}

TEST(KorMutex, EveryUnlockLetsOneOfTheWaitingThreadsGoOn)
{
    constexpr int WAITERS = 3;
    CKorMutex oMutex;
    ASSERT_TRUE(oMutex.Lock(0));
    std::array<std::atomic<int>, WAITERS> anIds{};
    std::atomic<int> nTaken(0);
    std::vector<std::thread> vecWaiters;
    for (std::atomic<int>& nId : anIds) {
        vecWaiters.emplace_back([&] {
            nId = ThreadId();
            oMutex.Lock(CKorMutex::WAIT_FOREVER);
            ++nTaken;
        });
    }
    for (const std::atomic<int>& nId : anIds)
        ASSERT_TRUE(WaitUntil([&] { return nId != 0 && IsAsleep(nId); }));
    for (int nUnlocked = 1; nUnlocked <= WAITERS; ++nUnlocked) {
        oMutex.Unlock();
        ASSERT_TRUE(WaitUntil([&] { return nTaken == nUnlocked; }));
        EXPECT_FALSE(oMutex.Lock(0));
    }
    for (std::thread& oWaiter : vecWaiters)
        oWaiter.join();
}

TEST(KorMutex, AnUnlockTooManyDoesNotAdmitTwoHolders)
{
    CKorMutex oMutex;
    oMutex.Unlock();
    EXPECT_TRUE(oMutex.Lock(0));
    EXPECT_FALSE(oMutex.Lock(0));
}

TEST(KorMutex, ExcludesAllOtherThreads)
{
    constexpr int THREADS = 4;
    constexpr int ROUNDS = 2000;
    CKorMutex oMutex;
    int nCount = 0;
    std::vector<std::thread> vecThreads;
    for (int i = 0; i < THREADS; ++i) {
        vecThreads.emplace_back([&] {
            for (int n = 0; n < ROUNDS; ++n) {
                oMutex.Lock(CKorMutex::WAIT_FOREVER);
                ++nCount;
                oMutex.Unlock();
            }
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(THREADS * ROUNDS, nCount);
}

} // namespace
