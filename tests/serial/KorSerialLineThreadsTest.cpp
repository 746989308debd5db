#include "tests/serial/LineTestPeer.h"
#include "tests/support/SerialResult.h"

#include <fcntl.h>
#include <memory>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace
{

/// Whether every step costs many times more here, so that stress tests do with less.
int Rounds(int nRounds)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    return nRounds / 5;
#else
    return UnderEmulation() ? nRounds / 5 : nRounds;
#endif
}

} // namespace

TEST(KorSerialLineThreads, CloseEndsAllWaits)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    const std::string strTooMuch(1000000, 'x'); // for a terminal that nobody reads
    const auto fnRead = [&oLine](unsigned int nTimeout) {
        std::string strData = "kept";
        EXPECT_EQ(Refused(ECANCELED), Told(oLine, oLine.ReadUntil("x", strData, nTimeout)));
        EXPECT_EQ("kept", strData);
    };
    Caller oReader([&]() { fnRead(FOREVER); });
    Caller oOtherReader([&]() { fnRead(LONG); });
    Caller oFrame([&]() {
        std::string strData;
        EXPECT_EQ(Refused(ECANCELED), Told(oLine, oLine.ReadFrame(1, strData, FOREVER)));
    });
    Caller oWriter([&]() {
        EXPECT_EQ(Refused(ECANCELED), Told(oLine, oLine.WriteText(strTooMuch, FOREVER)));
    });
    Caller oBreak(
        [&]() { EXPECT_EQ(OfBreak(Refused(ECANCELED)), Told(oLine, oLine.SendBreak(FOREVER))); });
    for (const Caller* pCaller : {&oReader, &oOtherReader, &oFrame, &oWriter})
        pCaller->AwaitSleep();
    if (UnderEmulation())
        oBreak.Join(); // it ended already
    else
        oBreak.AwaitSleep();
    oLine.Close();
    EXPECT_FALSE(oLine.IsHungUp());
    std::string strData;
    EXPECT_EQ(Refused(EBADF), Told(oLine, oLine.Read(1, strData, FOREVER)));
}

TEST(KorSerialLineThreads, CancelEndsWaitsAndLosesNothing)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    oTest.Hold("half");
    for (int i = 0; i < 3; ++i) {
        Caller oReader([&oLine]() {
            std::string strData;
            EXPECT_EQ(Refused(ECANCELED), Told(oLine, oLine.ReadUntil("\n", strData, FOREVER)));
        });
        oReader.AwaitSleep();
        oLine.Cancel();
    }
    oLine.Cancel(); // nobody waits: later calls are not its business
    oTest.m_oPeer.Send("\n");
    std::string strData;
    EXPECT_EQ(DONE, Told(oLine, oLine.ReadUntil("\n", strData, LONG)));
    EXPECT_EQ("half\n", strData);
    EXPECT_TRUE(oLine.IsOpen());
}

TEST(KorSerialLineThreads, AWaitAfterACancellationWaits)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    for (int i = 0; i < Rounds(300); ++i) {
        Caller oReader([&oLine]() {
            std::string strData;
            EXPECT_EQ(Refused(ECANCELED), Told(oLine, oLine.Read(1, strData, FOREVER)));
        });
        oReader.AwaitSleep();
        oLine.Cancel();
        std::string strData;
        ASSERT_EQ(TIMED_OUT, Told(oLine, oLine.Read(1, strData, 1)));
    }
}

TEST(KorSerialLineThreads, OneReadsAnotherWrites)
{
    TestLine oTest;
    constexpr unsigned int LENGTH = 500000;
    std::string strOut;
    while (strOut.size() < LENGTH)
        strOut += std::to_string(strOut.size());
    strOut.resize(LENGTH);
    Caller oSender([&]() { oTest.m_oPeer.Send(strOut); });
    Caller oReceiver([&]() { EXPECT_EQ(strOut, oTest.m_oPeer.Receive(LENGTH)); });
    Caller oWriter(
        [&]() { EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText(strOut, LONG))); });
    std::string strIn;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(LENGTH, strIn, LONG)));
    EXPECT_EQ(strOut, strIn);
}

TEST(KorSerialLineThreads, CloseWaitsForACallThatUsesTheDescriptor)
{
    TestLine oTest;
    std::atomic<bool> bInside{false};
    std::atomic<bool> bMayLeave{false};
    std::atomic<bool> bLeft{false};
    oTest.m_oLine.SetTrace([&](bool, const char*, unsigned int) { // runs within the call
        bInside = true;
        EXPECT_TRUE(WaitUntil([&]() { return bMayLeave.load(); }));
        bLeft = true;
    });
    Caller oWriter([&]() { oTest.m_oLine.WriteText("x", LONG); });
    ASSERT_TRUE(WaitUntil([&]() { return bInside.load(); }));
    Caller oCloser([&]() {
        oTest.m_oLine.Close();
        EXPECT_TRUE(bLeft);
    });
    oCloser.AwaitSleep();
    EXPECT_FALSE(oTest.m_oLine.IsOpen());
    bMayLeave = true;
}

TEST(KorSerialLineThreads, ADescriptorIsNeverUsedBeyondItsClose)
{
    const PseudoTerminal oPeer;
    CKorSerialLine oLine;
    std::atomic<bool> bEnough{false};
    Caller oReader([&]() {
        std::string strData;
        while (!bEnough)
            oLine.Read(100, strData, 5);
    });
    Caller oWriter([&]() {
        while (!bEnough)
            oLine.WriteText("x", 5);
    });
    Caller oCanceller([&]() {
        while (!bEnough) {
            oLine.Cancel();
            oLine.GetHandle();
        }
    });
    for (int i = 0; i < Rounds(100); ++i) {
        ASSERT_EQ(OK, SerialResult(oLine.Open(oPeer.Name())));
        oLine.Close();
        int anPipe[2];
        ASSERT_EQ(0, pipe2(anPipe, O_CLOEXEC | O_NONBLOCK)); // takes the free descriptors
        ASSERT_EQ(1, write(anPipe[1], "m", 1));
        std::this_thread::yield();
        char acBytes[2] = "";
        ASSERT_EQ(1, read(anPipe[0], acBytes, 2));
        ASSERT_EQ('m', acBytes[0]);
        close(anPipe[0]);
        close(anPipe[1]);
    }
    bEnough = true;
}

TEST(KorSerialLineThreads, ManyMayOpenCloseAndReceiveAtOnce)
{
    const PseudoTerminal oPeer;
    CKorSerialLine oLine;
    std::atomic<bool> bEnough{false};
    std::atomic<int> nCalls{0};
    std::vector<std::unique_ptr<Caller>> vecCallers;
    const auto fnStart = [&](auto fnCall) {
        vecCallers.push_back(std::make_unique<Caller>([&bEnough, &nCalls, fnCall]() {
            for (; !bEnough; ++nCalls)
                fnCall();
        }));
    };
    fnStart([&]() { oLine.Open(oPeer.Name()); });
    fnStart([&]() { oLine.StopReception(); });
    fnStart([&]() { oLine.SetOptions({}); });
    fnStart([&]() {
        oLine.StartReception([&oLine](const char*, unsigned int) { oLine.Close(); },
                             [](int) { ADD_FAILURE() << "nobody hung up"; });
    });
    std::thread oSender([&]() {
        while (!bEnough && write(oPeer.FarEnd(), "x", 1) != 0)
            std::this_thread::yield();
    });
    for (int i = 0; i < Rounds(300); ++i)
        oLine.Close();
    const int nBefore = nCalls; // now nobody closes all the time
    EXPECT_TRUE(WaitUntil([&]() { return nCalls > nBefore + Rounds(100); }));
    bEnough = true;
    fcntl(oPeer.FarEnd(), F_SETFL, O_NONBLOCK); // the sender may be waiting for room
    oLine.Open(oPeer.Name());
    tcflush(oPeer.FarEnd(), TCIOFLUSH);
    oSender.join();
    vecCallers.clear();
}
