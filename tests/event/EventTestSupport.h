#pragma once

#include "event/KorEventLoop.h"
#include "tests/support/Patience.h"

#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

/// Two connected handles.
class HandlePair
{
public:
    explicit HandlePair(bool bSocket = false)
    {
        EXPECT_EQ(0, bSocket ? socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_ahEnds)
                             : pipe2(m_ahEnds, O_CLOEXEC));
    }
    ~HandlePair()
    {
        CloseNear();
        CloseFar();
    }
    HandlePair(const HandlePair&) = delete;
    HandlePair& operator=(const HandlePair&) = delete;

    /// The end to read from.
    int Near() const { return m_ahEnds[0]; }
    /// The end to write to.
    int Far() const { return m_ahEnds[1]; }
    void CloseNear() { Close(m_ahEnds[0]); }
    void CloseFar() { Close(m_ahEnds[1]); }
    void Send(const std::string& strBytes) const
    {
        EXPECT_EQ(static_cast<ssize_t>(strBytes.size()),
                  write(Far(), strBytes.data(), strBytes.size()));
    }
    std::string Receive() const
    {
        char szBuffer[4096];
        const ssize_t nRead = read(Near(), szBuffer, sizeof szBuffer);
        return nRead > 0 ? std::string(szBuffer, static_cast<size_t>(nRead)) : "";
    }

private:
    static void Close(int& rhEnd)
    {
        if (rhEnd != -1)
            close(rhEnd);
        rhEnd = -1;
    }

    int m_ahEnds[2] = {-1, -1};
};

/// Milliseconds on the monotonic clock.
inline long long NowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

/// Runs rounds until the condition holds; fails the running test when it never does.
inline void RunUntil(CKorEventLoop& oLoop, const std::function<bool()>& fnCondition)
{
    const long long nEnd = NowMs() + PATIENCE_MS;
    while (!fnCondition() && NowMs() < nEnd)
        oLoop.RunOnce(100);
    EXPECT_TRUE(fnCondition()) << "it did not come";
}

/// Microseconds of the processor that this thread has used.
inline long long ProcessorTimeUs()
{
    timespec oTime;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &oTime);
    return oTime.tv_sec * 1000000LL + oTime.tv_nsec / 1000;
}
