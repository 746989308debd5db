#include "tests/event/EventTestSupport.h"
#include "tests/support/Emulation.h"
#include "tests/support/ThreadState.h"

#include <cerrno>
#include <functional>
#include <random>
#include <set>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace
{

using Loop = CKorEventLoop;

void SleepMs(int nMilliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(nMilliseconds));
}

TEST(KorEventTimer, CallsOnceAfterItsTime)
{
    Loop oLoop;
    int nCalls = 0;
    const long long nStart = NowMs();
    const int nTicket = oLoop.CallAfter(30, [&] { ++nCalls; });
    EXPECT_LT(0, nTicket);
    EXPECT_TRUE(oLoop.IsActive(nTicket));
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_LE(nStart + 29, NowMs());
    EXPECT_EQ(1, nCalls);
    EXPECT_FALSE(oLoop.IsActive(nTicket));
    EXPECT_FALSE(oLoop.Cancel(nTicket));
    EXPECT_FALSE(oLoop.RunOnce(50));
    EXPECT_EQ(1, nCalls);
}

TEST(KorEventTimer, RunOnceWaitsNoLongerThanItsTime)
{
    Loop oLoop;
    oLoop.CallAfter(PATIENCE_MS, [] {});
    const long long nStart = NowMs();
    EXPECT_FALSE(oLoop.RunOnce(30));
    EXPECT_LE(nStart + 29, NowMs());
    EXPECT_GT(nStart + 10000, NowMs());
}

TEST(KorEventTimer, CallsInTheOrderOfTheTimes)
{
    Loop oLoop;
    std::vector<int> vecOrder;
    for (const int nTime : {40, 10, 30, 10, 20, 40})
        oLoop.CallAfter(static_cast<unsigned int>(nTime),
                        [&vecOrder, nTime] { vecOrder.push_back(nTime); });
    SleepMs(100);
    EXPECT_TRUE(oLoop.RunOnce(0));
    EXPECT_EQ((std::vector<int>{10, 10, 20, 30, 40, 40}), vecOrder);
}

TEST(KorEventTimer, RepeatsUntilItIsCancelled)
{
    Loop oLoop;
    int nCalls = 0;
    int nTicket = 0;
    nTicket = oLoop.CallEvery(1, [&] {
        EXPECT_TRUE(oLoop.IsActive(nTicket));
        if (++nCalls == 5) {
            EXPECT_TRUE(oLoop.Cancel(nTicket));
            EXPECT_FALSE(oLoop.IsActive(nTicket));
            EXPECT_FALSE(oLoop.Cancel(nTicket));
            oLoop.Stop();
        }
    });
    EXPECT_EQ(0, oLoop.Run());
    EXPECT_FALSE(oLoop.RunOnce(20));
    EXPECT_EQ(5, nCalls);
}

TEST(KorEventTimer, KeepsToItsTurnsHoweverLateACallIs)
{
    constexpr int PERIOD = 1000;
    Loop oLoop;
    int nCalls = 0;
    oLoop.CallEvery(PERIOD, [&] { ++nCalls; });
    SleepMs(PERIOD + PERIOD / 2);
    EXPECT_TRUE(oLoop.RunOnce(0));
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_TRUE(oLoop.RunOnce(PERIOD * 3 / 4)) << "the second turn waits for a whole period";
    EXPECT_EQ(2, nCalls);
}

TEST(KorEventTimer, SkipsTurnsThatWereMissedBecauseOfOthers)
{
    constexpr int PERIOD = 500;
    Loop oLoop;
    int nCalls = 0;
    oLoop.CallEvery(PERIOD, [&] { ++nCalls; });
    SleepMs(3 * PERIOD + 10);
    EXPECT_TRUE(oLoop.RunOnce(0));
    EXPECT_FALSE(oLoop.RunOnce(0)) << "a turn was made up for";
    EXPECT_EQ(1, nCalls);
}

TEST(KorEventTimer, SkipsTurnsThatPassWhileItsHandlerRuns)
{
    constexpr int PERIOD = 500;
    Loop oLoop;
    int nCalls = 0;
    oLoop.CallEvery(PERIOD, [&] {
        ++nCalls;
        SleepMs(2 * PERIOD + 10);
    });
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_FALSE(oLoop.RunOnce(0)) << "a turn was made up for";
    EXPECT_EQ(1, nCalls);
}

TEST(KorEventTimer, LeavesTimeToTheOthers)
{
    Loop oLoop;
    int nOthers = 0;
    std::function<void()> fnAtOnce = [&] { oLoop.CallAfter(0, fnAtOnce); };
    fnAtOnce();
    oLoop.Post([&] { ++nOthers; });
    const HandlePair oPipe;
    oPipe.Send("x");
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) { ++nOthers; });
    EXPECT_TRUE(oLoop.RunOnce(0));
    EXPECT_EQ(2, nOthers);
}

TEST(KorEventTimer, RefusesAPeriodOfNothing)
{
    Loop oLoop;
    errno = 0;
    EXPECT_EQ(-1, oLoop.CallEvery(0, [] {}));
    EXPECT_EQ(EINVAL, errno);
}

TEST(KorEventTimer, WaitsForEverWithoutWakingUp)
{
    Loop oLoop;
    int nCalls = 0;
    for (const unsigned int nTime :
         {0xFFFFFFFFu, 0xFFFFFFFEu, 0x80000000u, 0x7FFFFFFFu, 2500000000u}) {
        oLoop.CallAfter(nTime, [&] { ++nCalls; });
        oLoop.CallEvery(nTime, [&] { ++nCalls; });
    }
    std::thread oThread([&] {
        SleepMs(300);
        oLoop.Stop();
    });
    rusage oBefore;
    getrusage(RUSAGE_THREAD, &oBefore);
    EXPECT_EQ(0, oLoop.Run());
    rusage oAfter;
    getrusage(RUSAGE_THREAD, &oAfter);
    oThread.join();
    EXPECT_EQ(0, nCalls);
    const long nMost = UnderEmulation() ? 500 : 8; // the emulator's threads wait for each other
    EXPECT_GE(nMost, oAfter.ru_nvcsw - oBefore.ru_nvcsw);
    EXPECT_GE(100000, (oAfter.ru_utime.tv_sec - oBefore.ru_utime.tv_sec) * 1000000 +
                          oAfter.ru_utime.tv_usec - oBefore.ru_utime.tv_usec);
}

TEST(KorEventTimer, IsWokenUpFromATimeOutOfMoreThan24Days)
{
    Loop oLoop;
    const HandlePair oPipe;
    int nCalls = 0;
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) {
        oPipe.Receive();
        ++nCalls;
    });
    const int nSelf = ThreadId();
    const auto fnRunsFor = [&](unsigned int nTime, const std::function<void()>& fnWake) {
        std::thread oThread([&] {
            EXPECT_TRUE(WaitUntil([nSelf] { return IsAsleep(nSelf); }));
            fnWake();
        });
        EXPECT_TRUE(oLoop.RunOnce(nTime));
        oThread.join();
    };
    fnRunsFor(0xFFFFFFFE, [&] { oPipe.Send("x"); });
    EXPECT_EQ(1, nCalls);
    fnRunsFor(0x80000000, [&] { oLoop.Post([&] { ++nCalls; }); });
    EXPECT_EQ(2, nCalls);
}

TEST(KorEventTimer, AgreesWithAListOfTimersWhateverIsAddedAndCancelled)
{
    Loop oLoop;
    std::mt19937 oRandom(20261121);
    struct Expected
    {
        int nTicket;
        unsigned int nTime;
    };
    std::vector<Expected> vecExpected;
    std::vector<unsigned int> vecFired;
    for (int nStep = 0; nStep < 3000; ++nStep) {
        if (oRandom() % 3 != 0 || vecExpected.empty()) {
            const auto nTime = static_cast<unsigned int>(oRandom() % 20);
            const int nTicket =
                oLoop.CallAfter(10 * nTime, [&vecFired, nTime] { vecFired.push_back(nTime); });
            vecExpected.push_back({nTicket, nTime});
        } else {
            const size_t nVictim = oRandom() % vecExpected.size();
            EXPECT_TRUE(oLoop.Cancel(vecExpected[nVictim].nTicket));
            EXPECT_FALSE(oLoop.Cancel(vecExpected[nVictim].nTicket));
            vecExpected.erase(vecExpected.begin() + static_cast<long>(nVictim));
        }
    }
    RunUntil(oLoop, [&] { return vecFired.size() == vecExpected.size(); });
    EXPECT_FALSE(oLoop.RunOnce(0));
    for (const Expected& oExpected : vecExpected)
        EXPECT_FALSE(oLoop.IsActive(oExpected.nTicket));
}

TEST(KorEventTimer, GivesEveryTicketANumberOfItsOwn)
{
    Loop oLoop;
    std::set<int> setTickets;
    std::mt19937 oRandom(7);
    std::vector<int> vecLive;
    for (int nStep = 0; nStep < 20000; ++nStep) {
        vecLive.push_back(oLoop.CallAfter(PATIENCE_MS, [] {}));
        EXPECT_TRUE(setTickets.insert(vecLive.back()).second) << vecLive.back();
        EXPECT_LT(0, vecLive.back());
        while (vecLive.size() > 10 && oRandom() % 100 < 52) {
            EXPECT_TRUE(oLoop.Cancel(vecLive.front()));
            vecLive.erase(vecLive.begin());
        }
    }
    for (const int nTicket : vecLive)
        EXPECT_TRUE(oLoop.IsActive(nTicket));
}

} // namespace
