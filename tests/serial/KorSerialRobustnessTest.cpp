#include "serial/KorSerial.h"
#include "tests/serial/SerialTestPort.h"
#include "tests/support/EntriesOf.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"
#include "tests/support/ThreadState.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <list>
#include <pthread.h>
#include <set>
#include <signal.h>
#include <string>
#include <sys/resource.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

/// Bytes of every value in an order that shows losses and exchanges.
std::string Stream(std::size_t nLength, unsigned int nSeed = 1)
{
    std::string strBytes;
    strBytes.reserve(nLength);
    unsigned int nState = nSeed;
    for (std::size_t nByte = 0; nByte < nLength; ++nByte) {
        nState = nState * 1103515245U + 12345U;
        strBytes += static_cast<char>(nState >> 16 & 0xFF);
    }
    return strBytes;
}

/// Takes @p nLength characters as they come; fewer when the port stays silent.
std::string Take(CKorSerial& oPort, std::size_t nLength)
{
    std::string strTaken;
    while (strTaken.size() < nLength && oPort.WaitForResponse(1, PATIENCE_MS) == 0)
        strTaken += oPort.GetReceivedData(static_cast<unsigned int>(nLength - strTaken.size()));
    return strTaken;
}

void WaitForFirstCharacter(CKorSerial& oPort)
{
    while (oPort.GetReceivedData().empty())
        std::this_thread::yield();
}

/// A receive thread from the outside: the thread that has come since the object was made.
class NewThread
{
public:
    /// Waits until the thread has paused so often that its pauses have grown to their limit.
    /// @return how long that took
    std::chrono::nanoseconds AwaitLongPauses()
    {
        const auto oStart = std::chrono::steady_clock::now();
        const unsigned long nWaits = Waits(Number());
        EXPECT_TRUE(WaitUntil([&] { return Waits(Number()) >= nWaits + 10; }));
        return std::chrono::steady_clock::now() - oStart;
    }

private:
    int Number() const
    {
        int nNew = 0;
        for (const int nThread : Threads()) {
            if (m_setBefore.count(nThread) == 0)
                nNew = nThread;
        }
        return nNew;
    }

    const std::set<int> m_setBefore = Threads();
};

/// Less than ten pauses take that double from 1 ms to 100 ms.
constexpr std::chrono::milliseconds TEN_PAUSES(200);

/// A raw line.
class KorSerialRobustness : public testing::Test
{
protected:
    KorSerialRobustness() { m_oLine.MakeRaw(); }

    PseudoTerminal m_oLine;
};

// A close takes one wait of its thread, so that ports side by side take no longer than one.
TEST_F(KorSerialRobustness, OpensAndClosesAThousandTimes)
{
    constexpr int PORTS = 20;
    const int nRounds = OnSlowGround() ? 10 : 50;
    std::list<PseudoTerminal> lstLines(PORTS);
    const std::ptrdiff_t nDescriptors = EntriesOf("/proc/self/fd");
    std::vector<std::thread> vecThreads;
    for (PseudoTerminal& oLine : lstLines) {
        oLine.MakeRaw();
        vecThreads.emplace_back([&oLine, nRounds]() {
            TestPort oPort;
            oPort.m_oRcvThread.SetTimeout(1);
            for (int nRound = 0; nRound < nRounds; ++nRound) {
                ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
                oLine.Send("x");
                ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(1, PATIENCE_MS)));
                ASSERT_EQ("x", oPort.GetReceivedData(1));
                ASSERT_EQ(OK, SerialResult(oPort.close()));
            }
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(nDescriptors, EntriesOf("/proc/self/fd"));
}

TEST_F(KorSerialRobustness, OneThreadSendsWhileAnotherReceives)
{
    const std::string strOut = Stream(OnSlowGround() ? 16384 : 131072, 1);
    const std::string strIn = Stream(strOut.size(), 2);
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));

    std::thread oSender([&]() {
        for (std::size_t nSent = 0; nSent < strOut.size(); nSent += 256)
            EXPECT_EQ(OK, SerialResult(oPort.DataReq(strOut.data() + nSent, 256, 0)));
    });
    std::thread oFarSender([&]() { m_oLine.Send(strIn); });
    std::string strArrived;
    std::thread oFarReceiver([&]() { strArrived = m_oLine.Receive(strOut.size()); });
    EXPECT_TRUE(strIn == Take(oPort, strIn.size()));
    oSender.join();
    oFarSender.join();
    oFarReceiver.join();
    EXPECT_TRUE(strOut == strArrived);
}

TEST(KorSerialSeveral, PortsWorkSideBySide)
{
    constexpr unsigned int PORTS = 4;
    std::list<PseudoTerminal> lstLines(PORTS);
    std::list<TestPort> lstPorts(PORTS);
    std::vector<std::thread> vecThreads;
    vecThreads.reserve(PORTS);
    auto itPort = lstPorts.begin();
    unsigned int nSeed = 1;
    for (PseudoTerminal& oLine : lstLines) {
        TestPort& oPort = *itPort++;
        oLine.MakeRaw();
        ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
        vecThreads.emplace_back([&oLine, &oPort, nSeed]() {
            const std::string strBytes = Stream(16384, nSeed);
            for (std::size_t nSent = 0; nSent < strBytes.size(); nSent += 1024) {
                oLine.Send(strBytes.substr(nSent, 1024));
                EXPECT_TRUE(strBytes.substr(nSent, 1024) == Take(oPort, 1024));
            }
        });
        ++nSeed;
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
    for (TestPort& oPort : lstPorts)
        EXPECT_EQ(0U, oPort.m_oRcvBuffer.GetLength());
}

TEST_F(KorSerialRobustness, AMebibyteOfAllByteValuesArrivesWholeAndInOrder)
{
    const std::string strBytes = Stream(OnSlowGround() ? 65536 : 1048576);
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    std::thread oSender([&]() { m_oLine.Send(strBytes); });
    EXPECT_TRUE(strBytes == Take(oPort, strBytes.size()));
    oSender.join();
    EXPECT_EQ(0U, oPort.m_oRcvBuffer.GetLength());
}

std::atomic<int> nSignals{0};

void CountSignal(int)
{
    ++nSignals;
}

TEST_F(KorSerialRobustness, SignalsThatInterruptWaitsLoseNothing)
{
    struct sigaction oAction = {};
    oAction.sa_handler = CountSignal;
    ASSERT_EQ(0, sigaction(SIGALRM, &oAction, nullptr));
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    sigset_t oAlarm; // from now on only the receive thread gets them
    sigemptyset(&oAlarm);
    sigaddset(&oAlarm, SIGALRM);
    ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &oAlarm, nullptr));
    const itimerval oEveryMs = {{0, 1000}, {0, 1000}};
    ASSERT_EQ(0, setitimer(ITIMER_REAL, &oEveryMs, nullptr));

    const std::string strBytes = Stream(20480);
    for (std::size_t nSent = 0; nSent < strBytes.size(); nSent += 1024) {
        const int nBefore = nSignals; // with nothing to receive they meet a waiting thread
        EXPECT_TRUE(WaitUntil([nBefore] { return nSignals > nBefore + 2; }));
        m_oLine.Send(strBytes.substr(nSent, 1024));
        EXPECT_TRUE(strBytes.substr(nSent, 1024) == Take(oPort, 1024));
    }
    const itimerval oOff = {};
    setitimer(ITIMER_REAL, &oOff, nullptr);
    EXPECT_GT(nSignals, 0);
    EXPECT_EQ(OK, SerialResult(oPort.close()));
}

TEST_F(KorSerialRobustness, AHangUpNeitherBurnsACoreNorFillsMemory)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("A");
    WaitForFirstCharacter(oPort);
    const auto oStart = std::chrono::steady_clock::now();
    m_oLine.HangUp();
    EXPECT_EQ(OK, SerialResult(oPort.WaitForResponse(12, PATIENCE_MS)));
    EXPECT_GE(std::chrono::steady_clock::now() - oStart, TEN_PAUSES);
    const std::string strReceived = oPort.GetReceivedData();
    EXPECT_EQ(std::string(strReceived.size(), 'A'), strReceived);
    EXPECT_EQ(OK, SerialResult(oPort.close()));
}

TEST_F(KorSerialRobustness, AShortTimeoutLimitsThePauseAfterAHangUp)
{
    TestPort oPort;
    oPort.m_oRcvThread.SetTimeout(2);
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.HangUp();
    // A pause that went on growing would need ages for so many.
    EXPECT_EQ(OK, SerialResult(oPort.WaitForResponse(100, PATIENCE_MS)));
    EXPECT_EQ(OK, SerialResult(oPort.close()));
}

TEST_F(KorSerialRobustness, AFailedOpenOnAnOpenPortLeavesItUsable)
{
    NewThread oThread;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    const int hFirst = oPort.m_hPort;
    EXPECT_EQ(OPEN_ERROR, SerialResult(oPort.open("/dev/no-such-device")));
    EXPECT_EQ(-1, oPort.m_hPort);
    EXPECT_NE(3, oPort.m_oRcvThread.GetState());
    EXPECT_GE(oThread.AwaitLongPauses(), TEN_PAUSES);

    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ(3, oPort.m_oRcvThread.GetState());
    EXPECT_EQ(0, ::close(hFirst));
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("A");
    EXPECT_EQ("A", Take(oPort, 1));
}

TEST_F(KorSerialRobustness, ReceivesAtFullSpeedAgainAfterALastingError)
{
    NewThread oThread;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    const int hFirst = oPort.ReleaseDescriptor();
    oThread.AwaitLongPauses();
    oPort.AdoptDescriptor(hFirst);
    const std::string strBytes = Stream(4096);
    m_oLine.Send(strBytes);
    // At the speed of the longest pause this would take seven minutes.
    EXPECT_TRUE(strBytes == Take(oPort, strBytes.size()));
}

TEST_F(KorSerialRobustness, ADescriptorThatFitsNoSetIsSurvived)
{
    rlimit oLimit;
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &oLimit));
    ASSERT_GT(oLimit.rlim_max, 1100U);
    oLimit.rlim_cur = oLimit.rlim_max;
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &oLimit));
    std::vector<int> vecTaken;
    while (vecTaken.empty() || vecTaken.back() < 1023)
        vecTaken.push_back(dup(m_oLine.FarEnd()));

    NewThread oThread;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    EXPECT_GT(oPort.m_hPort, 1023);
    EXPECT_GE(oThread.AwaitLongPauses(), TEN_PAUSES);
    EXPECT_EQ(OK, SerialResult(oPort.DataReq("out", 3, 0)));
    EXPECT_EQ("out", m_oLine.Receive(3));
    EXPECT_EQ(OK, SerialResult(oPort.close()));

    for (const int hTaken : vecTaken)
        ::close(hTaken);
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("in");
    EXPECT_EQ("in", Take(oPort, 2));
}

TEST_F(KorSerialRobustness, TheTimeoutMayChangeWhileTheThreadRuns)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    for (unsigned int nTimeout = 1; nTimeout < 50; ++nTimeout) {
        oPort.m_oRcvThread.SetTimeout(nTimeout);
        m_oLine.Send("x");
        std::this_thread::yield();
    }
    EXPECT_EQ(std::string(49, 'x'), Take(oPort, 49));
}

} // namespace
