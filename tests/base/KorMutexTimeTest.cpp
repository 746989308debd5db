// A program of its own, because its clock and its condition variable take the places of the C
// library's.

#include "base/KorMutex.h"

#include <cerrno>
#include <ctime>
#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>

namespace
{

timespec g_oNow = {};
timespec g_oDeadline = {};
clockid_t g_nClock = -1;
std::function<void()> g_fnWait;
pthread_mutex_t* g_pGuard = nullptr; // of the mutex that is waited for

bool IsGuarded()
{
    return pthread_mutex_trylock(g_pGuard) == EBUSY;
}

} // namespace

extern "C" int clock_gettime(clockid_t nClock, timespec* pTime) noexcept
{
    g_nClock = nClock;
    *pTime = g_oNow;
    return 0;
}

extern "C" int pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec* pDeadline)
{
    g_oDeadline = *pDeadline;
    return ETIMEDOUT;
}

extern "C" int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t* pGuard)
{
    g_pGuard = pGuard;
    EXPECT_TRUE(IsGuarded());
    pthread_mutex_unlock(pGuard);
    g_fnWait();
    return pthread_mutex_lock(pGuard);
}

extern "C" int pthread_cond_signal(pthread_cond_t*) noexcept
{
    EXPECT_TRUE(IsGuarded()) << "a thread that has just found the mutex held would not be woken";
    return 0;
}

namespace
{

TEST(KorMutexTime, WaitsForExactlyAsLongAsAsked)
{
    const struct
    {
        timespec oNow;
        unsigned int nTimeout;
        timespec oDeadline;
    } aCases[] = {
        {{100, 0}, 1, {100, 1000000}},
        {{100, 0}, 999, {100, 999000000}},
        {{100, 0}, 1000, {101, 0}},
        {{100, 0}, 59999, {159, 999000000}},
        {{100, 998999999}, 1, {100, 999999999}},
        {{100, 999000000}, 1, {101, 0}},
        {{100, 999999999}, 1, {101, 999999}},
        {{100, 999999999}, 1000, {101, 999999999}},
        {{100, 500000000}, 1500, {102, 0}},
        {{100, 0}, 4294967294, {4295067, 294000000}},
    };
    CKorMutex oMutex;
    ASSERT_TRUE(oMutex.Lock(0));
    for (const auto& oCase : aCases) {
        g_oNow = oCase.oNow;
        EXPECT_FALSE(oMutex.Lock(oCase.nTimeout));
        EXPECT_EQ(CLOCK_MONOTONIC, g_nClock);
        EXPECT_EQ(oCase.oDeadline.tv_sec, g_oDeadline.tv_sec) << oCase.nTimeout;
        EXPECT_EQ(oCase.oDeadline.tv_nsec, g_oDeadline.tv_nsec) << oCase.nTimeout;
    }
}

TEST(KorMutexTime, GoesOnWaitingWhenItWasWokenInVain)
{
    CKorMutex oMutex;
    ASSERT_TRUE(oMutex.Lock(0));
    int nWakes = 0;
    g_fnWait = [&] {
        if (++nWakes == 3)
            oMutex.Unlock();
    };
    EXPECT_TRUE(oMutex.Lock(CKorMutex::WAIT_FOREVER));
    EXPECT_EQ(3, nWakes);
    EXPECT_FALSE(oMutex.Lock(0));
}

} // namespace
