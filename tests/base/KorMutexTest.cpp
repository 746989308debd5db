#include "base/KorMutex.h"

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
    bool bTaken = false;
    std::thread oWaiter([&] { bTaken = oMutex.Lock(CKorMutex::WAIT_FOREVER); });
    oMutex.Unlock();
    oWaiter.join();
    EXPECT_TRUE(bTaken);
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
