// The event loop beside libuv: each pair does the same with both loops, and each turn waits for
// the kernel as a real turn does.

#include "event/KorEventLoop.h"

#include <benchmark/benchmark.h>
#include <random>
#include <sys/eventfd.h>
#include <unistd.h>
#include <uv.h>
#include <vector>

namespace
{

/// A time far away, in milliseconds.
unsigned int SomeTime(std::mt19937& oRandom)
{
    constexpr unsigned int LATE = 3600000;
    return LATE + static_cast<unsigned int>(oRandom()) % LATE;
}

/// A loop of libuv that counts what it is told.
class UvLoop
{
public:
    UvLoop() { uv_loop_init(&m_oLoop); }
    ~UvLoop()
    {
        uv_walk(
            &m_oLoop, [](uv_handle_t* pHandle, void*) { uv_close(pHandle, nullptr); }, nullptr);
        uv_run(&m_oLoop, UV_RUN_DEFAULT);
        uv_loop_close(&m_oLoop);
    }
    UvLoop(const UvLoop&) = delete;
    UvLoop& operator=(const UvLoop&) = delete;

    uv_loop_t* operator&() { return &m_oLoop; }

private:
    uv_loop_t m_oLoop;
};

template <typename THandle>
void Count(THandle* pHandle)
{
    ++*static_cast<long*>(pHandle->data);
}

void PostedCall_Tarvo(benchmark::State& oState)
{
    CKorEventLoop oLoop;
    long nCalls = 0;
    for (auto oTurn : oState) {
        oLoop.Post([&nCalls] { ++nCalls; });
        oLoop.RunOnce(0xFFFFFFFF);
    }
    oState.SetItemsProcessed(nCalls);
}
BENCHMARK(PostedCall_Tarvo);

void PostedCall_Libuv(benchmark::State& oState)
{
    uv_async_t oAsync;
    UvLoop oLoop;
    long nCalls = 0;
    uv_async_init(&oLoop, &oAsync, Count<uv_async_t>);
    oAsync.data = &nCalls;
    for (auto oTurn : oState) {
        uv_async_send(&oAsync);
        uv_run(&oLoop, UV_RUN_ONCE);
    }
    oState.SetItemsProcessed(nCalls);
}
BENCHMARK(PostedCall_Libuv);

void TimerThatFires_Tarvo(benchmark::State& oState)
{
    CKorEventLoop oLoop;
    long nCalls = 0;
    for (auto oTurn : oState) {
        oLoop.CallAfter(0, [&nCalls] { ++nCalls; });
        oLoop.RunOnce(0xFFFFFFFF);
    }
    oState.SetItemsProcessed(nCalls);
}
BENCHMARK(TimerThatFires_Tarvo);

void TimerThatFires_Libuv(benchmark::State& oState)
{
    uv_timer_t oTimer;
    UvLoop oLoop;
    long nCalls = 0;
    uv_timer_init(&oLoop, &oTimer);
    oTimer.data = &nCalls;
    for (auto oTurn : oState) {
        uv_timer_start(&oTimer, Count<uv_timer_t>, 0, 0);
        uv_run(&oLoop, UV_RUN_ONCE);
    }
    oState.SetItemsProcessed(nCalls);
}
BENCHMARK(TimerThatFires_Libuv);

/// Cancels one of many timers and starts another in its place, as time-outs of requests do.
void TimerAmongMany_Tarvo(benchmark::State& oState)
{
    CKorEventLoop oLoop;
    std::mt19937 oRandom(1);
    std::vector<int> vecTickets;
    for (long nTimer = 0; nTimer < oState.range(0); ++nTimer)
        vecTickets.push_back(oLoop.CallAfter(SomeTime(oRandom), [] {}));
    for (auto oTurn : oState) {
        int& rnTicket = vecTickets[oRandom() % vecTickets.size()];
        oLoop.Cancel(rnTicket);
        rnTicket = oLoop.CallAfter(SomeTime(oRandom), [] {});
    }
}
BENCHMARK(TimerAmongMany_Tarvo)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);

void TimerAmongMany_Libuv(benchmark::State& oState)
{
    std::vector<uv_timer_t> vecTimers(static_cast<size_t>(oState.range(0)));
    UvLoop oLoop;
    std::mt19937 oRandom(1);
    for (uv_timer_t& oTimer : vecTimers) {
        uv_timer_init(&oLoop, &oTimer);
        uv_timer_start(
            &oTimer, [](uv_timer_t*) {}, SomeTime(oRandom), 0);
    }
    for (auto oTurn : oState) {
        uv_timer_t& oTimer = vecTimers[oRandom() % vecTimers.size()];
        uv_timer_stop(&oTimer);
        uv_timer_start(
            &oTimer, [](uv_timer_t*) {}, SomeTime(oRandom), 0);
    }
}
BENCHMARK(TimerAmongMany_Libuv)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);

/// Starts so many timers and waits until all of them were called.
void TimersThatFire_Tarvo(benchmark::State& oState)
{
    CKorEventLoop oLoop;
    std::mt19937 oRandom(1);
    long nCalls = 0;
    for (auto oTurn : oState) {
        for (long nTimer = 0; nTimer < oState.range(0); ++nTimer)
            oLoop.CallAfter(static_cast<unsigned int>(oRandom()) % 2, [&nCalls] { ++nCalls; });
        while (nCalls % oState.range(0) != 0 || nCalls == 0)
            oLoop.RunOnce(0xFFFFFFFF);
    }
    oState.SetItemsProcessed(nCalls);
}
BENCHMARK(TimersThatFire_Tarvo)->Arg(10000);

void TimersThatFire_Libuv(benchmark::State& oState)
{
    std::vector<uv_timer_t> vecTimers(static_cast<size_t>(oState.range(0)));
    UvLoop oLoop;
    std::mt19937 oRandom(1);
    long nCalls = 0;
    for (uv_timer_t& oTimer : vecTimers) {
        uv_timer_init(&oLoop, &oTimer);
        oTimer.data = &nCalls;
    }
    for (auto oTurn : oState) {
        for (uv_timer_t& oTimer : vecTimers)
            uv_timer_start(&oTimer, Count<uv_timer_t>, oRandom() % 2, 0);
        uv_run(&oLoop, UV_RUN_DEFAULT);
    }
    oState.SetItemsProcessed(nCalls);
}
BENCHMARK(TimersThatFire_Libuv)->Arg(10000);

/// Handles of which one becomes readable at a time.
class Handles
{
public:
    explicit Handles(long nCount)
    {
        for (long nHandle = 0; nHandle < nCount; ++nHandle)
            m_vecHandles.push_back(eventfd(0, EFD_CLOEXEC));
    }
    ~Handles()
    {
        for (const int nHandle : m_vecHandles)
            close(nHandle);
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;

    const std::vector<int>& All() const { return m_vecHandles; }
    void SignalAny()
    {
        const eventfd_t nOne = 1;
        eventfd_write(m_vecHandles[m_oRandom() % m_vecHandles.size()], nOne);
    }
    static void Take(int nHandle)
    {
        eventfd_t nValue = 0;
        eventfd_read(nHandle, &nValue);
    }

private:
    std::vector<int> m_vecHandles;
    std::mt19937 m_oRandom{1};
};

void HandleAmongMany_Tarvo(benchmark::State& oState)
{
    Handles oHandles(oState.range(0));
    CKorEventLoop oLoop;
    for (const int nHandle : oHandles.All())
        oLoop.WatchHandle(nHandle, CKorEventLoop::EVENT_READABLE,
                          [nHandle](unsigned int) { Handles::Take(nHandle); });
    for (auto oTurn : oState) {
        oHandles.SignalAny();
        oLoop.RunOnce(0xFFFFFFFF);
    }
}
BENCHMARK(HandleAmongMany_Tarvo)->Arg(1)->Arg(1000);

void HandleAmongMany_Libuv(benchmark::State& oState)
{
    Handles oHandles(oState.range(0));
    std::vector<uv_poll_t> vecPolls(oHandles.All().size());
    UvLoop oLoop;
    for (size_t nPoll = 0; nPoll < vecPolls.size(); ++nPoll) {
        uv_poll_init(&oLoop, &vecPolls[nPoll], oHandles.All()[nPoll]);
        vecPolls[nPoll].data = const_cast<int*>(&oHandles.All()[nPoll]);
        uv_poll_start(&vecPolls[nPoll], UV_READABLE, [](uv_poll_t* pPoll, int, int) {
            Handles::Take(*static_cast<const int*>(pPoll->data));
        });
    }
    for (auto oTurn : oState) {
        oHandles.SignalAny();
        uv_run(&oLoop, UV_RUN_ONCE);
    }
}
BENCHMARK(HandleAmongMany_Libuv)->Arg(1)->Arg(1000);

void WatchAndCancelAmongMany_Tarvo(benchmark::State& oState)
{
    const Handles oHandles(oState.range(0));
    CKorEventLoop oLoop;
    int nTicket = 0;
    for (const int nHandle : oHandles.All())
        nTicket = oLoop.WatchHandle(nHandle, CKorEventLoop::EVENT_READABLE, [](unsigned int) {});
    for (auto oTurn : oState) {
        oLoop.Cancel(nTicket);
        nTicket = oLoop.WatchHandle(oHandles.All().back(), CKorEventLoop::EVENT_READABLE,
                                    [](unsigned int) {});
    }
}
BENCHMARK(WatchAndCancelAmongMany_Tarvo)->Arg(1)->Arg(1000);

} // namespace
