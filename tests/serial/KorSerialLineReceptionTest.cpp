#include "tests/serial/LineTestPeer.h"

#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <vector>

namespace
{

/// What a reception told, for a test that waits for it.
class Listener
{
public:
    CKorSerialLine::DataHandler Data()
    {
        return [this](const char* pData, unsigned int nLength) {
            const std::lock_guard<std::mutex> oLock(m_oMutex);
            m_strData.append(pData, nLength);
            m_oChanged.notify_all();
        };
    }
    CKorSerialLine::HangupHandler Hangup()
    {
        return [this](int nErrno) {
            const std::lock_guard<std::mutex> oLock(m_oMutex);
            m_strData += "[" + std::to_string(nErrno) + "]";
            m_oChanged.notify_all();
        };
    }
    /// Waits until so much was told; gives all that was.
    std::string Await(std::size_t nLength)
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        m_oChanged.wait_for(oLock, PATIENCE, [&]() { return m_strData.size() >= nLength; });
        return m_strData;
    }

private:
    std::mutex m_oMutex;
    std::condition_variable m_oChanged;
    std::string m_strData;
};

const std::string HUNG_UP = "[" + std::to_string(EIO) + "]";
const Outcome RUNS_ALREADY{CKorSerial::SERIAL_THREAD_RUNNING, EALREADY};

/// A flag that a thread waits for.
class Signal
{
public:
    void Set()
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        m_bSet = true;
        m_oChanged.notify_all();
    }
    void Await()
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        EXPECT_TRUE(m_oChanged.wait_for(oLock, PATIENCE, [this]() { return m_bSet; }));
    }

private:
    std::mutex m_oMutex;
    std::condition_variable m_oChanged;
    bool m_bSet = false;
};

} // namespace

TEST(KorSerialLineReception, HandsOnEverythingInOrder)
{
    TestLine oTest;
    Listener oListener;
    std::string strBytes;
    while (strBytes.size() < 100000)
        strBytes += std::to_string(strBytes.size()) + "\r\n";
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    oTest.m_oPeer.Send(strBytes);
    EXPECT_EQ(strBytes, oListener.Await(strBytes.size()));
}

TEST(KorSerialLineReception, BeginsWithWhatIsHeld)
{
    TestLine oTest;
    Listener oListener;
    oTest.Hold("held ");
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    EXPECT_EQ("held ", oListener.Await(5));
    EXPECT_EQ(0U, oTest.m_oLine.GetHeldCount());
    oTest.m_oPeer.Send("new");
    EXPECT_EQ("held new", oListener.Await(8));
}

TEST(KorSerialLineReception, ReadsAreNotSupportedMeanwhile)
{
    TestLine oTest;
    Listener oListener;
    std::string strData = "kept";
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, LONG)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(1, strData, LONG)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("x", strData, LONG)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(1, strData, LONG)));
    EXPECT_EQ("kept", strData);
    oTest.m_oLine.StopReception();
    oTest.m_oPeer.Send("x");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("x", strData, LONG)));
}

TEST(KorSerialLineReception, ASecondStartLeavesTheFirst)
{
    TestLine oTest;
    Listener oFirst;
    Listener oSecond;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oFirst.Data(), nullptr)));
    EXPECT_EQ(RUNS_ALREADY,
              Told(oTest.m_oLine, oTest.m_oLine.StartReception(oSecond.Data(), nullptr)));
    oTest.m_oPeer.Send("x");
    EXPECT_EQ("x", oFirst.Await(1));
}

TEST(KorSerialLineReception, NeedsADataHandler)
{
    TestLine oTest;
    Listener oListener;
    EXPECT_EQ(Refused(EINVAL),
              Told(oTest.m_oLine, oTest.m_oLine.StartReception(nullptr, oListener.Hangup())));
    std::string strData;
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)));
}

TEST(KorSerialLineReception, TellsAHangUpOnceBehindTheData)
{
    TestLine oTest;
    Listener oListener;
    oTest.Hold("last");
    ASSERT_EQ(DONE, Told(oTest.m_oLine,
                         oTest.m_oLine.StartReception(oListener.Data(), oListener.Hangup())));
    oListener.Await(4);
    oTest.m_oPeer.HangUp();
    EXPECT_EQ("last" + HUNG_UP, oListener.Await(4 + HUNG_UP.size()));
    oTest.m_oLine.StopReception();
    oTest.m_oLine.Close();
    EXPECT_EQ("last" + HUNG_UP, oListener.Await(0));
    EXPECT_TRUE(oTest.m_oLine.IsHungUp());
}

TEST(KorSerialLineReception, ALineThatHungUpGivesWhatIsHeldAndThenTells)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    Listener oListener;
    oTest.Hold("held");
    oTest.HangUp();
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.WriteText("x", 0)));
    ASSERT_EQ(DONE, Told(oLine, oLine.StartReception(oListener.Data(), oListener.Hangup())));
    EXPECT_EQ("held" + HUNG_UP, oListener.Await(4 + HUNG_UP.size()));
    oLine.StopReception();
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.StartReception(oListener.Data(), nullptr)));
}

TEST(KorSerialLineReception, AHangUpWithoutHandlerEndsIt)
{
    TestLine oTest;
    Listener oListener;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    oTest.m_oPeer.HangUp();
    EXPECT_TRUE(WaitUntil([&oTest]() { return oTest.m_oLine.IsHungUp(); }));
    std::string strData;
    EXPECT_TRUE(WaitUntil(
        [&]() { return Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)) == Refused(EIO); }));
}

TEST(KorSerialLineReception, CloseIsNoHangUp)
{
    for (int i = 0; i < 50; ++i) {
        TestLine oTest;
        Listener oListener;
        ASSERT_EQ(DONE, Told(oTest.m_oLine,
                             oTest.m_oLine.StartReception(oListener.Data(), oListener.Hangup())));
        oTest.m_oLine.Close();
        EXPECT_EQ("", oListener.Await(0));
        EXPECT_FALSE(oTest.m_oLine.IsHungUp());
    }
}

TEST(KorSerialLineReception, CancelDoesNotEndIt)
{
    TestLine oTest;
    Listener oListener;
    ASSERT_EQ(DONE, Told(oTest.m_oLine,
                         oTest.m_oLine.StartReception(oListener.Data(), oListener.Hangup())));
    oTest.m_oLine.Cancel();
    oTest.m_oPeer.Send("x");
    EXPECT_EQ("x", oListener.Await(1));
}

TEST(KorSerialLineReception, StopLeavesWhatWasNotHandedOn)
{
    TestLine oTest;
    Signal oInside;
    Signal oMayLeave;
    std::string strGot;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(
                                            [&](const char* pData, unsigned int nLength) {
                                                strGot.append(pData, nLength);
                                                oInside.Set();
                                                oMayLeave.Await();
                                            },
                                            nullptr)));
    oTest.m_oPeer.Send("a");
    oInside.Await();
    oTest.Arrive("b");
    Caller oStopper([&oTest]() { oTest.m_oLine.StopReception(); });
    oStopper.AwaitSleep();
    oMayLeave.Set();
    oStopper.Join();
    EXPECT_EQ("a", strGot);
    std::string strData;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(1, strData, LONG)));
    EXPECT_EQ("b", strData);
}

TEST(KorSerialLineReception, StopAndCloseWaitForTheHandler)
{
    for (const bool bClose : {false, true}) {
        TestLine oTest;
        Signal oInside;
        Signal oMayLeave;
        std::atomic<bool> bLeft{false};
        const auto fnEnd = [&]() {
            bClose ? oTest.m_oLine.Close() : oTest.m_oLine.StopReception();
            EXPECT_TRUE(bLeft);
        };
        ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(
                                                [&](const char*, unsigned int) {
                                                    oInside.Set();
                                                    oMayLeave.Await();
                                                    bLeft = true;
                                                },
                                                nullptr)));
        oTest.m_oPeer.Send("x");
        oInside.Await();
        Caller oOne(fnEnd);
        Caller oOther(fnEnd);
        oOne.AwaitSleep();
        oOther.AwaitSleep();
        oMayLeave.Set();
    }
}

TEST(KorSerialLineReception, EveryCallMayBeMadeFromTheDataHandler)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    Signal oDone;
    ASSERT_EQ(DONE,
              Told(oLine, oLine.StartReception(
                              [&](const char*, unsigned int) {
                                  std::string strData;
                                  EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.Read(1, strData, LONG)));
                                  EXPECT_EQ(DONE, Told(oLine, oLine.WriteText("y", LONG)));
                                  EXPECT_EQ(DONE, Told(oLine, oLine.SetOptions({})));
                                  EXPECT_EQ(DONE, Told(oLine, oLine.DiscardInput()));
                                  EXPECT_EQ(DONE, Told(oLine, oLine.Drain(LONG)));
                                  oLine.Cancel();
                                  EXPECT_TRUE(oLine.IsOpen());
                                  oLine.StopReception();
                                  EXPECT_EQ(TIMED_OUT, Told(oLine, oLine.Read(1, strData, 0)));
                                  oLine.Close();
                                  EXPECT_FALSE(oLine.IsOpen());
                                  oDone.Set();
                              },
                              nullptr)));
    oTest.m_oPeer.Send("x");
    EXPECT_EQ("y", oTest.m_oPeer.Receive(1));
    oDone.Await();
    oLine.Close();
    EXPECT_EQ(DONE, Told(oLine, oLine.Open(oTest.m_oPeer.Name())));
}

TEST(KorSerialLineReception, TheDataHandlerMayCloseWhileAnotherThreadDoes)
{
    for (int i = 0; i < 100; ++i) {
        TestLine oTest;
        Signal oInside;
        ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(
                                                [&](const char*, unsigned int) {
                                                    oInside.Set();
                                                    oTest.m_oLine.Close();
                                                },
                                                nullptr)));
        oTest.m_oPeer.Send("x");
        oInside.Await();
        oTest.m_oLine.Close();
    }
}

TEST(KorSerialLineReception, TheHangupHandlerMayOpenAndStartAnew)
{
    constexpr std::size_t ROUNDS = 100;
    const std::vector<std::unique_ptr<PseudoTerminal>> vecPeers = [] {
        std::vector<std::unique_ptr<PseudoTerminal>> vecNew;
        while (vecNew.size() < ROUNDS)
            vecNew.push_back(std::make_unique<PseudoTerminal>());
        return vecNew;
    }();
    CKorSerialLine oLine;
    Listener oListener;
    std::atomic<std::size_t> nOpened{0};
    CKorSerialLine::HangupHandler fnHangup;
    const auto fnOpen = [&]() {
        EXPECT_EQ(DONE, Told(oLine, oLine.Open(vecPeers[nOpened]->Name())));
        EXPECT_EQ(DONE, Told(oLine, oLine.StartReception(oListener.Data(), fnHangup)));
        ++nOpened;
    };
    fnHangup = [&](int nErrno) {
        EXPECT_EQ(EIO, nErrno);
        if (nOpened < ROUNDS)
            fnOpen();
    };
    fnOpen();
    for (std::size_t i = 0; i < ROUNDS; ++i) {
        ASSERT_TRUE(WaitUntil([&]() { return nOpened > i; }));
        vecPeers[i]->Send("x");
        EXPECT_EQ(std::string(i + 1, 'x'), oListener.Await(i + 1));
        vecPeers[i]->HangUp();
    }
    oLine.Close();
}

TEST(KorSerialLineReception, AHandlerMayDestroyTheLine)
{
    const PseudoTerminal oPeer;
    auto pLine = std::make_unique<CKorSerialLine>();
    Signal oStarted;
    Signal oDone;
    ASSERT_EQ(DONE, Told(*pLine, pLine->Open(oPeer.Name())));
    ASSERT_EQ(DONE, Told(*pLine, pLine->StartReception(
                                     [&](const char*, unsigned int) {
                                         oStarted.Await();
                                         pLine.reset();
                                         oDone.Set();
                                     },
                                     nullptr)));
    oStarted.Set();
    oPeer.Send("x");
    oDone.Await();
    CKorSerialLine oNext;
    EXPECT_EQ(DONE, Told(oNext, oNext.Open(oPeer.Name())));
}

TEST(KorSerialLineReception, ItsThreadLeavesSignalsToOthers)
{
    TestLine oTest;
    Signal oDone;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(
                                            [&](const char*, unsigned int) {
                                                sigset_t oBlocked;
                                                pthread_sigmask(SIG_BLOCK, nullptr, &oBlocked);
                                                EXPECT_EQ(1, sigismember(&oBlocked, SIGTERM));
                                                EXPECT_EQ(0, sigismember(&oBlocked, SIGSEGV));
                                                oDone.Set();
                                            },
                                            nullptr)));
    oTest.m_oPeer.Send("x");
    oDone.Await();
    sigset_t oBlocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &oBlocked);
    EXPECT_EQ(0, sigismember(&oBlocked, SIGTERM));
}
