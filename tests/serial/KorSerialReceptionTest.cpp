#include "serial/KorSerial.h"
#include "tests/serial/SerialTestPort.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

/// Records what it is handed, and where.
class RecordingPort : public TestPort
{
public:
    ~RecordingPort() override
    {
        while (close() == SERIAL_THREAD_RUNNING) {
        }
    }

    void DataInd(char c) override
    {
        m_oRecord.AddChar(c);
        m_oThread = std::this_thread::get_id();
    }

    std::string WaitForRecord(std::size_t nCount)
    {
        while (m_oRecord.GetLength() < nCount)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return m_oRecord.GetBuffer();
    }

    CKorMutexBuffer m_oRecord;
    std::atomic<std::thread::id> m_oThread;
};

/// A raw line.
class KorSerialReception : public testing::Test
{
protected:
    KorSerialReception() { m_oLine.MakeRaw(); }

    PseudoTerminal m_oLine;
};

TEST_F(KorSerialReception, KeepsWhatArrives)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("ABC\rDEF");
    std::string strData;
    EXPECT_EQ(OK, SerialResult(oPort.WaitForData("\r", strData, PATIENCE_MS)));
    EXPECT_EQ("ABC\r", strData);
    EXPECT_EQ(OK, SerialResult(oPort.WaitForResponse(3, PATIENCE_MS)));
    EXPECT_EQ("DEF", oPort.GetReceivedData());
    EXPECT_EQ("DEF", oPort.GetReceivedData());
}

TEST_F(KorSerialReception, TakesANumberOfCharacters)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("ABCDEF");
    ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(6, PATIENCE_MS)));
    std::string strData;
    EXPECT_EQ(OK, SerialResult(oPort.WaitForData(3, strData, PATIENCE_MS)));
    EXPECT_EQ("ABC", strData);
    EXPECT_EQ("DEF", oPort.GetReceivedData());
}

TEST_F(KorSerialReception, ReceivesEveryByteValue)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    std::string strAll;
    for (int nByte = 0; nByte < 256; ++nByte)
        strAll += static_cast<char>(nByte);
    m_oLine.Send(strAll);
    std::string strData;
    EXPECT_EQ(OK, SerialResult(oPort.WaitForData(256, strData, PATIENCE_MS)));
    EXPECT_EQ(strAll, strData);
}

TEST_F(KorSerialReception, AnswersARequest)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    std::thread oDevice([this]() {
        EXPECT_EQ("ID?\r", m_oLine.Receive(4));
        m_oLine.Send("METER 1\r");
    });
    EXPECT_EQ(OK, SerialResult(oPort.DataReq("ID?\r", 4, 0)));
    std::string strAnswer;
    EXPECT_EQ(OK, SerialResult(oPort.WaitForData("\r", strAnswer, PATIENCE_MS)));
    EXPECT_EQ("METER 1\r", strAnswer);
    oDevice.join();
}

TEST_F(KorSerialReception, ReceivedCharactersOutliveCloseAndOpen)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("AB");
    ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(2, PATIENCE_MS)));
    ASSERT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ("AB", oPort.GetReceivedData());
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("CD");
    ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(4, PATIENCE_MS)));
    EXPECT_EQ("ABCD", oPort.GetReceivedData());
    oPort.ClearBuffer();
    EXPECT_EQ("", oPort.GetReceivedData());
}

TEST_F(KorSerialReception, OpenDiscardsWhatTheDeviceStillHeld)
{
    const int hOther = ::open(m_oLine.Name(), O_RDWR | O_NOCTTY);
    m_oLine.Send("stale");
    int nHeld = 0;
    while (nHeld < 5)
        ASSERT_EQ(0, ioctl(hOther, FIONREAD, &nHeld));
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("new");
    ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(3, PATIENCE_MS)));
    EXPECT_EQ("new", oPort.GetReceivedData());
    ::close(hOther);
}

TEST_F(KorSerialReception, AnOverrideTakesTheCharactersItself)
{
    RecordingPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("ABC");
    EXPECT_EQ("ABC", oPort.WaitForRecord(3));
    EXPECT_EQ("", oPort.GetReceivedData());
    EXPECT_NE(std::this_thread::get_id(), oPort.m_oThread.load());
}

TEST_F(KorSerialReception, AfterAHangUpThePreviousCharacterComesAgain)
{
    RecordingPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("AB");
    ASSERT_EQ("AB", oPort.WaitForRecord(2));
    m_oLine.HangUp();
    const std::string strRecord = oPort.WaitForRecord(5);
    EXPECT_EQ("AB" + std::string(strRecord.size() - 2, 'B'), strRecord);
}

TEST_F(KorSerialReception, CloseOfAnIdlePortEndsWithinItsSecond)
{
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    EXPECT_EQ(100U, oPort.m_oRcvThread.GetTimeout());
    const auto oStart = std::chrono::steady_clock::now();
    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_LT(std::chrono::steady_clock::now() - oStart, std::chrono::seconds(10));
}

/// Does not return from DataInd() before it may.
class HoldingPort : public TestPort
{
public:
    ~HoldingPort() override
    {
        m_bMayReturn = true;
        while (close() == SERIAL_THREAD_RUNNING) {
        }
    }

    void DataInd(char c) override
    {
        TestPort::DataInd(c);
        while (!m_bMayReturn)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    std::atomic<bool> m_bMayReturn{false};
};

TEST_F(KorSerialReception, CloseGivesUpWhenTheThreadDoesNotEnd)
{
    HoldingPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("A");
    ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(1, PATIENCE_MS)));
    const auto oStart = std::chrono::steady_clock::now();
    EXPECT_EQ(THREAD_RUNNING, SerialResult(oPort.close()));
    EXPECT_GE(std::chrono::steady_clock::now() - oStart, std::chrono::seconds(1));
    EXPECT_NE(-1, fcntl(oPort.m_hPort, F_GETFD));

    oPort.m_bMayReturn = true;
    EXPECT_EQ(OK, SerialResult(oPort.close()));
    EXPECT_EQ(-1, oPort.m_hPort);
    EXPECT_EQ("A", oPort.GetReceivedData());
}

TEST_F(KorSerialReception, NoCharacterIsHandedOnOnceTerminationIsAskedFor)
{
    class Ending : public RecordingPort
    {
    public:
        void DataInd(char c) override
        {
            RecordingPort::DataInd(c);
            if (c == 'B')
                m_oRcvThread.Terminate();
        }
    };
    Ending oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("ABCDEF");
    while (oPort.m_oRcvThread.GetState() != 3)
        CKorThread::Sleep(0, 1);
    EXPECT_EQ("AB", oPort.m_oRecord.GetBuffer());
}

// A read of more than is there would wait up to 25 s for the rest of the driver's minimum.
TEST_F(KorSerialReception, CharactersNeedNotWaitForTheDriversMinimum)
{
    termios oSettings = m_oLine.Settings();
    oSettings.c_cc[VMIN] = 255;
    oSettings.c_cc[VTIME] = 255;
    m_oLine.Apply(oSettings);
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(m_oLine)));
    m_oLine.Send("ABC");
    EXPECT_EQ(OK, SerialResult(oPort.WaitForResponse(3, 12000)));
    EXPECT_EQ("ABC", oPort.GetReceivedData());
}

TEST(KorSerialRcvThread, WaitsAHundredMillisecondsUnlessToldOtherwise)
{
    CKorSerial::CKorSerialRcvThread oThread;
    EXPECT_EQ(100U, oThread.GetTimeout());
    oThread.SetTimeout(0xFFFFFFFF);
    EXPECT_EQ(0xFFFFFFFFU, oThread.GetTimeout());
    EXPECT_EQ(3, oThread.GetState());
    EXPECT_TRUE(oThread.Initialize());
}

TEST(KorSerialRcvThread, EndsAtOnceWithoutAPort)
{
    CKorSerial::CKorSerialRcvThread oThread;
    oThread.Run();
    ASSERT_TRUE(oThread.Start());
    while (oThread.GetState() != 3)
        CKorThread::Sleep(0, 1);
    EXPECT_FALSE(oThread.IsTerminationRequested());
}

TEST_F(KorSerialReception, ARunningThreadMayBeDestroyed)
{
    TestPort oPort;
    oPort.AdoptDescriptor(::open(m_oLine.Name(), O_RDWR | O_NOCTTY));
    {
        CKorSerial::CKorSerialRcvThread oThread;
        oThread.Initialize(&oPort);
        ASSERT_TRUE(oThread.Start());
        m_oLine.Send("A");
        ASSERT_EQ(OK, SerialResult(oPort.WaitForResponse(1, PATIENCE_MS)));
    }
    m_oLine.Send("B");
    char c = '?';
    EXPECT_EQ(OK, SerialResult(oPort.ReadOneByte(c, 60000)));
    EXPECT_EQ('B', c);
}

TEST(KorSerialRcvThread, KeepsTheOrderOfItsMembers)
{
    class OpenThread : public CKorSerial::CKorSerialRcvThread
    {
    public:
        using CKorSerialRcvThread::m_nTimeout;
        using CKorSerialRcvThread::m_pSerial;
    };
    OpenThread oThread;
    const char* const pPort = reinterpret_cast<const char*>(&oThread.m_pSerial);
    const char* const pTimeout = reinterpret_cast<const char*>(&oThread.m_nTimeout);
    EXPECT_GE(pPort, reinterpret_cast<const char*>(&oThread) + sizeof(void*));
    EXPECT_EQ(pPort + sizeof(void*), pTimeout);
    EXPECT_EQ(sizeof(unsigned int), sizeof oThread.m_nTimeout);
}

} // namespace
