#include "tests/event/EventTestSupport.h"

#include <cstdlib>
#include <new>
#include <signal.h>

namespace
{

long s_nAllocations = 0;

} // namespace

void* operator new(std::size_t nSize)
{
    ++s_nAllocations;
    void* pMemory = std::malloc(nSize == 0 ? 1 : nSize);
    if (pMemory == nullptr)
        throw std::bad_alloc();
    return pMemory;
}

void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}

namespace
{

using Loop = CKorEventLoop;

TEST(KorEventMemory, ATurnOfTheSteadyStateAllocatesNothing)
{
    Loop oLoop;
    const HandlePair oPipe;
    const HandlePair oPair(true);
    int nCalls = 0;
    int nTimers = 0;
    std::function<void()> fnAgain = [&] {
        ++nTimers;
        oLoop.CallAfter(1, [&fnAgain] { fnAgain(); });
    };
    fnAgain();
    oLoop.CallEvery(1, [&] {
        ++nCalls;
        oPipe.Send("x");
        raise(SIGUSR1);
        oLoop.Post([&nCalls] { ++nCalls; });
    });
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) {
        char cByte = 0;
        EXPECT_EQ(1, read(oPipe.Near(), &cByte, 1));
        ++nCalls;
    });
    const int nWriter = oLoop.WatchHandle(oPair.Near(), Loop::EVENT_HANGUP, [](unsigned int) {});
    oLoop.CallOnSignal(SIGUSR1, [&] {
        ++nCalls;
        oLoop.SetEvents(nWriter, nCalls % 2 == 0 ? Loop::EVENT_WRITABLE : Loop::EVENT_HANGUP);
    });
    while (nCalls < 100)
        oLoop.RunOnce(PATIENCE_MS);
    const long nBefore = s_nAllocations;
    while (nCalls < 1000)
        oLoop.RunOnce(PATIENCE_MS);
    EXPECT_EQ(nBefore, s_nAllocations);
    EXPECT_LT(2, nTimers);
}

} // namespace
