#include "base/KorThread.h"
#include "serial/KorSerial.h"
#include "tests/support/SerialResult.h"

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

/// The sleeps asked for, in milliseconds, and what happens during each of them.
std::vector<unsigned int> vecSleeps;
std::function<void()> fnDuringSleep;

int nThreadState = 3;

} // namespace

// This program brings its own Sleep(), which takes the place of the base library's: it counts
// instead of sleeping, so waits are told by their steps and not by the clock.
void CKorThread::Sleep(unsigned int nSeconds, unsigned int nMilliseconds)
{
    vecSleeps.push_back(nSeconds * 1000 + nMilliseconds);
    if (fnDuringSleep)
        fnDuringSleep();
}

// As a board's base library may have it: the state of a thread that was never started.
int CKorThread::GetState() const
{
    return nThreadState;
}

namespace
{

class KorSerialWait : public testing::Test
{
protected:
    KorSerialWait()
    {
        vecSleeps.clear();
        fnDuringSleep = nullptr;
    }

    void Receive(const std::string& strText)
    {
        for (const char c : strText)
            m_oPort.DataInd(c);
    }

    void ReceiveDuringSleep(std::size_t nSleep, const std::string& strText)
    {
        fnDuringSleep = [this, nSleep, strText]() {
            if (vecSleeps.size() == nSleep)
                Receive(strText);
        };
    }

    CKorSerial m_oPort;
};

std::vector<unsigned int> Sleeps(std::size_t nCount)
{
    return std::vector<unsigned int>(nCount, 25);
}

TEST_F(KorSerialWait, TimeoutZeroDoesNotEvenLook)
{
    Receive("0123456789");
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForResponse(5, 0)));
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForResponse(0, 0)));
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForResponse("5", 0)));
    EXPECT_EQ(Sleeps(0), vecSleeps);
}

TEST_F(KorSerialWait, WhatIsThereIsReportedAtOnce)
{
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForResponse(0, 100)));
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForResponse("", 100)));
    Receive("xxOKxx");
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForResponse(6, 1)));
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForResponse("OK", 1)));
    EXPECT_EQ(Sleeps(0), vecSleeps);
    EXPECT_EQ("xxOKxx", m_oPort.GetReceivedData());
}

TEST_F(KorSerialWait, LooksTwiceIn30Milliseconds)
{
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForResponse("OK", 30)));
    EXPECT_EQ(Sleeps(2), vecSleeps);

    vecSleeps.clear();
    ReceiveDuringSleep(1, "OK");
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForResponse("OK", 30)));
    EXPECT_EQ(Sleeps(1), vecSleeps);
}

TEST_F(KorSerialWait, DoesNotLookAfterTheLastSleep)
{
    ReceiveDuringSleep(2, "OK");
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForResponse("OK", 30)));
    EXPECT_EQ(Sleeps(2), vecSleeps);
    EXPECT_EQ("OK", m_oPort.GetReceivedData());
}

TEST_F(KorSerialWait, LooksOnceForEveryBegun25Milliseconds)
{
    for (const unsigned int nTimeout : {1U, 24U, 25U, 26U, 49U, 50U, 51U, 100U, 1000U, 1001U}) {
        vecSleeps.clear();
        EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForResponse(1, nTimeout)));
        EXPECT_EQ(Sleeps((nTimeout + 24) / 25), vecSleeps) << nTimeout;
        vecSleeps.clear();
        EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForResponse("x", nTimeout)));
        EXPECT_EQ(Sleeps((nTimeout + 24) / 25), vecSleeps) << nTimeout;
    }
}

TEST_F(KorSerialWait, WaitsUntilEnoughCharactersAreHeld)
{
    fnDuringSleep = [this]() { Receive("ab"); };
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForResponse(5, 1000)));
    EXPECT_EQ(Sleeps(3), vecSleeps);
    EXPECT_EQ("ababab", m_oPort.GetReceivedData());
}

TEST_F(KorSerialWait, TakesUpToTheDelimiterAndLeavesTheRest)
{
    Receive("ABC\rDEF");
    std::string strData;
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForData("\r", strData, 1000)));
    EXPECT_EQ("ABC\r", strData);
    EXPECT_EQ("DEF", m_oPort.GetReceivedData());
}

TEST_F(KorSerialWait, TakesTheNumberAskedForAndLeavesTheRest)
{
    Receive("ABCDEF");
    std::string strData;
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForData(3, strData, 1000)));
    EXPECT_EQ("ABC", strData);
    EXPECT_EQ("DEF", m_oPort.GetReceivedData());
}

TEST_F(KorSerialWait, AFailedWaitLeavesTheCallersDataAndTheBuffer)
{
    Receive("AB");
    std::string strData = "mine";
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForData(3, strData, 100)));
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForData("\r", strData, 100)));
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.WaitForData(1, strData, 0)));
    EXPECT_EQ("mine", strData);
    EXPECT_EQ("AB", m_oPort.GetReceivedData());
}

TEST_F(KorSerialWait, ANegativeTimeoutIsAVeryLongWait)
{
    std::string strData;
    ReceiveDuringSleep(10000, "late\r");
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForData("\r", strData, -1)));
    EXPECT_EQ("late\r", strData);

    vecSleeps.clear();
    ReceiveDuringSleep(10000, "late");
    EXPECT_EQ(OK, SerialResult(m_oPort.WaitForData(4, strData, -2147483647 - 1)));
    EXPECT_EQ("late", strData);
}

TEST_F(KorSerialWait, LookingKeepsAndTakingRemoves)
{
    Receive("AB\r\nCD");
    EXPECT_EQ("AB\r\nCD", m_oPort.GetReceivedData());
    EXPECT_EQ("AB\r\nCD", m_oPort.GetReceivedData());
    EXPECT_EQ("A", m_oPort.GetReceivedData(1));
    EXPECT_EQ("", m_oPort.GetReceivedData("no such"));
    EXPECT_EQ("B\r\n", m_oPort.GetReceivedData("\r\n"));
    EXPECT_EQ("", m_oPort.GetReceivedData(0));
    EXPECT_EQ("CD", m_oPort.GetReceivedData(10));
    EXPECT_EQ("", m_oPort.GetReceivedData());
}

TEST_F(KorSerialWait, ClearBufferDiscardsWhatWasReceived)
{
    Receive("old");
    m_oPort.ClearBuffer();
    EXPECT_EQ("", m_oPort.GetReceivedData());
}

/// A state of threads for the scope.
class ThreadState
{
public:
    explicit ThreadState(int nState) { nThreadState = nState; }
    ~ThreadState() { nThreadState = 3; }
    ThreadState(const ThreadState&) = delete;
    ThreadState& operator=(const ThreadState&) = delete;
};

TEST_F(KorSerialWait, CloseWaitsASecondForTheThread)
{
    const ThreadState oRunning(2);
    EXPECT_EQ(THREAD_RUNNING, SerialResult(m_oPort.close()));
    EXPECT_EQ(Sleeps(40), vecSleeps);
}

TEST_F(KorSerialWait, CloseSeesAThreadThatEndsWithTheLastSleep)
{
    const ThreadState oRunning(2);
    fnDuringSleep = [] { nThreadState = vecSleeps.size() == 40 ? 3 : 2; };
    EXPECT_EQ(OK, SerialResult(m_oPort.close()));
    EXPECT_EQ(Sleeps(40), vecSleeps);
}

TEST_F(KorSerialWait, APortIsDestroyedAlsoWhereAThreadNeverReportsItsEnd)
{
    for (const int nState : {0, 1, 2}) {
        const ThreadState oNeverEnded(nState);
        vecSleeps.clear();
        {
            const CKorSerial oPort;
        }
        EXPECT_EQ(Sleeps(40 + 4), vecSleeps) << "the time of close() and one time-out";
    }
}

TEST_F(KorSerialWait, AThreadIsDestroyedAlsoWhereItNeverReportsItsEnd)
{
    const ThreadState oNeverEnded(0);
    {
        CKorSerial::CKorSerialRcvThread oThread;
        oThread.SetTimeout(50);
        oThread.Initialize(&m_oPort);
    }
    EXPECT_EQ(Sleeps(40 + 2), vecSleeps);
}

} // namespace
