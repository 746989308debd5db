// In a program of its own, because it counts the threads that are joined.

#include "base/KorThread.h"

#include <gtest/gtest.h>
#include <pthread.h>

namespace
{

int g_nJoined = 0;

} // namespace

extern "C" int pthread_join(pthread_t, void**)
{
    ++g_nJoined;
    return 0;
}

namespace
{

TEST(KorThreadJoin, WhatWasNeverStartedIsNotAwaited)
{
    {
        const CKorThread oThread(0);
    }
    EXPECT_EQ(0, g_nJoined);
}

} // namespace
