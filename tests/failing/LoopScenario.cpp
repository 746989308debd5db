// An event loop that waits for a pipe, a file, timers, a signal and posted calls.

#include "event/KorEventLoop.h"
#include "tests/failing/Scenarios.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{

class CLoop : public CScenario
{
public:
    CLoop()
    {
        Expect(pipe2(m_ahPipe, O_CLOEXEC | O_NONBLOCK) == 0, "a pipe for the test");
        m_hFile = open("/dev/null", O_RDWR | O_CLOEXEC);
    }
    ~CLoop() override
    {
        close(m_ahPipe[0]);
        close(m_ahPipe[1]);
        close(m_hFile);
    }
    void Run() override
    {
        m_nTaken = 0;
        m_nCalled = 0;
        CKorEventLoop oLoop;
        for (int nBit = 0; nBit < TIMERS; ++nBit)
            Take("a timer is taken", nBit,
                 [&] { return oLoop.CallAfter(0, [this, nBit] { Call(nBit); }) > 0; });
        Take("a handle is watched", TIMERS, [&] {
            return oLoop.WatchHandle(m_ahPipe[1], CKorEventLoop::EVENT_WRITABLE,
                                     [this](unsigned int) { Call(TIMERS); }) > 0;
        });
        Take("a file is watched", TIMERS + 1, [&] {
            return oLoop.WatchHandle(m_hFile, CKorEventLoop::EVENT_READABLE,
                                     [this](unsigned int) { Call(TIMERS + 1); }) > 0;
        });
        Take("a signal is awaited", TIMERS + 2, [&] {
            return oLoop.CallOnSignal(SIGUSR1, [this] { Call(TIMERS + 2); }) > 0 &&
                   raise(SIGUSR1) == 0;
        });
        Take("a call is posted", TIMERS + 3,
             [&] { return oLoop.Post([this] { Call(TIMERS + 3); }); });
        Succeeds("all that was taken is called", [&] {
            oLoop.RunOnce(0);
            oLoop.RunOnce(0); // a call that was interrupted brings no handles
            return m_nCalled == m_nTaken;
        });
        Succeeds("a loop runs",
                 [&] { return oLoop.Post([&oLoop] { oLoop.Stop(7); }) && oLoop.Run() == 7; });
    }

private:
    static constexpr int TIMERS = 20;

    /// What could not be taken is not called.
    template <typename TOperation>
    void Take(const char* pszName, int nBit, TOperation fnTake)
    {
        if (Succeeds(pszName, fnTake))
            m_nTaken |= 1U << nBit;
    }
    void Call(int nBit) { m_nCalled |= 1U << nBit; }

    int m_ahPipe[2] = {-1, -1};
    int m_hFile = -1;
    unsigned int m_nTaken = 0;
    unsigned int m_nCalled = 0;
};

} // namespace

CScenario* MakeLoop(const std::string&)
{
    return new CLoop;
}
