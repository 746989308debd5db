#pragma once

#include "serial/KorSerialLine.h"
#include "tests/support/Emulation.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"
#include "tests/support/ThreadState.h"

#include <atomic>
#include <cerrno>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <thread>
#include <utility>

constexpr unsigned int FOREVER = 0xFFFFFFFF;
/// Long enough to be reached by nothing that works.
constexpr unsigned int LONG = PATIENCE_MS;

/// A line on a pseudo-terminal that nobody made raw.
struct TestLine
{
    explicit TestLine(const SKorLineOptions& oOptions = {})
    {
        EXPECT_EQ(OK, SerialResult(m_oLine.Open(m_oPeer.Name(), oOptions)));
    }

    /// Waits until the kernel has bytes for the line, or a hang-up.
    void AwaitInput() const
    {
        pollfd oLine = {m_oLine.GetHandle(), POLLIN, 0};
        EXPECT_EQ(1, poll(&oLine, 1, PATIENCE_MS));
    }
    /// Sends bytes and waits until the kernel has them for the line.
    void Arrive(const std::string& strBytes) const
    {
        m_oPeer.Send(strBytes);
        AwaitInput();
    }
    /// Makes the line hold bytes behind the delimiter "|".
    void Hold(const std::string& strBytes)
    {
        std::string strData;
        m_oPeer.Send("|" + strBytes);
        EXPECT_EQ(OK, SerialResult(m_oLine.ReadUntil("|", strData, LONG)));
        EXPECT_TRUE(WaitUntil([this, &strBytes, &strData]() {
            m_oLine.ReadBytes(static_cast<unsigned int>(strBytes.size()) + 1, strData, 0);
            return m_oLine.GetHeldCount() == strBytes.size();
        }));
    }
    void HangUp()
    {
        m_oPeer.HangUp();
        AwaitInput();
    }

    PseudoTerminal m_oPeer;
    CKorSerialLine m_oLine;
};

/// A result with the reason for it.
using Outcome = std::pair<SerialResult, int>;

/// What a call on a line told: its result and `errno`; -1 for the latter when GetLastError() tells
/// another reason.
inline Outcome Told(const CKorSerialLine& oLine, int nResult)
{
    const int nErrno = nResult == CKorSerial::SERIAL_OK ? 0 : errno;
    return {SerialResult(nResult), nErrno == 0 || nErrno == oLine.GetLastError() ? nErrno : -1};
}

inline Outcome Refused(int nErrno)
{
    return {IO_ERROR, nErrno};
}

const Outcome DONE{OK, 0};
const Outcome TIMED_OUT{WOULDBLOCK, EAGAIN};
const Outcome UNSUPPORTED{NOT_SUPPORTED, EOPNOTSUPP};

/// What a break gives that should give @p oOutcome: emulators do not know it.
inline Outcome OfBreak(Outcome oOutcome)
{
    return UnderEmulation() ? UNSUPPORTED : oOutcome;
}

/// A thread that makes one call.
class Caller
{
public:
    explicit Caller(std::function<void()> fnCall)
        : m_oThread([this, fnCall]() {
              m_nId = ThreadId();
              fnCall();
          })
    {
    }
    ~Caller() { Join(); }
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    /// Waits until the call waits.
    void AwaitSleep() const
    {
        EXPECT_TRUE(WaitUntil([this]() { return m_nId != 0 && IsAsleep(m_nId); }));
    }
    void Join()
    {
        if (m_oThread.joinable())
            m_oThread.join();
    }

private:
    std::atomic<int> m_nId{0};
    std::thread m_oThread;
};
