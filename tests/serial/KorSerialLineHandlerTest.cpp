#include "tests/serial/LineListener.h"
#include "tests/serial/LineTestPeer.h"

#include <csignal>
#include <memory>
#include <vector>

namespace
{

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

} // namespace
