#include "serial/KorSerial.h"
#include "tests/serial/SerialTestPort.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"
#include "tests/support/ThreadState.h"

#include <atomic>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <signal.h>
#include <thread>
#include <unistd.h>

namespace
{

/// A raw line for ports that close themselves in their destructor only.
class KorSerialDestructor : public testing::Test
{
protected:
    KorSerialDestructor() { m_oLine.MakeRaw(); }

    SerialResult Open(CKorSerial& roPort) const
    {
        return SerialResult(roPort.open(m_oLine.Name(), CKorSerial::BAUD_9600,
                                        CKorSerial::PARITY_NONE, CKorSerial::STOPBITS_1,
                                        CKorSerial::BYTESIZE_8, nullptr));
    }

    PseudoTerminal m_oLine;
};

/// Waits until all threads but those of @p setBefore wait.
void AwaitSleepOfNew(const std::set<int>& setBefore)
{
    EXPECT_TRUE(WaitUntil([&setBefore] {
        bool bAsleep = false;
        for (const int nThread : Threads()) {
            if (setBefore.count(nThread) == 0)
                bAsleep = IsAsleep(nThread);
        }
        return bAsleep;
    }));
}

/// Sends to the far end without pause until the end of the scope.
class Streamer
{
public:
    explicit Streamer(const PseudoTerminal& oLine)
        : m_oThread([this, nFarEnd = oLine.FarEnd()]() {
              fcntl(nFarEnd, F_SETFL, O_RDWR | O_NONBLOCK);
              while (!m_bEnd) {
                  if (write(nFarEnd, "0123456789", 10) < 0)
                      std::this_thread::yield();
              }
          })
    {
    }
    ~Streamer()
    {
        m_bEnd = true;
        m_oThread.join();
    }
    Streamer(const Streamer&) = delete;
    Streamer& operator=(const Streamer&) = delete;

private:
    std::atomic<bool> m_bEnd{false};
    std::thread m_oThread;
};

TEST_F(KorSerialDestructor, EndsWhileDataStreamsIn)
{
    const Streamer oStreamer(m_oLine);
    for (int nRound = 0; nRound < 20; ++nRound) {
        CKorSerial oPort;
        ASSERT_EQ(OK, Open(oPort));
        ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(1, PATIENCE_MS)));
    }
}

TEST_F(KorSerialDestructor, EndsRightAfterOpen)
{
    for (int nRound = 0; nRound < 10; ++nRound) {
        CKorSerial oPort;
        ASSERT_EQ(OK, Open(oPort));
    }
}

TEST_F(KorSerialDestructor, OutwaitsASlowThread)
{
    int hPort = -1;
    const std::set<int> setBefore = Threads();
    {
        CKorSerial oPort;
        (oPort.*(&TestPort::m_oRcvThread)).SetTimeout(1500);
        ASSERT_EQ(OK, Open(oPort));
        hPort = oPort.*(&TestPort::m_hPort);
        AwaitSleepOfNew(setBefore);
    }
    EXPECT_EQ(-1, fcntl(hPort, F_GETFD));
}

CKorSerial* s_pPort = nullptr;
std::atomic<bool> s_bReceives{false};

/// Tells when it is about to put a character into its buffer.
class TellingPort : public CKorSerial
{
public:
    void DataInd(char c) override
    {
        s_bReceives = true;
        CKorSerial::DataInd(c);
    }
};

/// Shows the mutex of a buffer.
class OpenBuffer : public CKorMutexBuffer
{
public:
    static CKorMutex& MutexOf(CKorMutexBuffer& roBuffer)
    {
        return roBuffer.*(&OpenBuffer::m_oMutex);
    }
};

TEST_F(KorSerialDestructor, EndsInAHandlerOfASignalThatInterruptedAUseOfTheBuffer)
{
    ChildProcess oChild([this] {
        signal(SIGTERM, [](int) {
            delete s_pPort;
            _exit(7);
        });
        const std::set<int> setBefore = Threads();
        s_pPort = new TellingPort;
        EXPECT_EQ(OK, Open(*s_pPort));
        CKorMutexBuffer& oBuffer = s_pPort->*(&TestPort::m_oRcvBuffer);
        OpenBuffer::MutexOf(oBuffer).Lock(0);
        m_oLine.Send("A");
        EXPECT_TRUE(WaitUntil([] { return s_bReceives.load(); }));
        AwaitSleepOfNew(setBefore);
        return raise(SIGTERM);
    });
    EXPECT_EQ(7, oChild.Wait().nExitStatus);
}

} // namespace
