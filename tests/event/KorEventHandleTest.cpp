#include "tests/event/EventTestSupport.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <ctime>
#include <memory>
#include <vector>

namespace
{

using Loop = CKorEventLoop;

TEST(KorEventHandle, IsCalledAsLongAsItsConditionHolds)
{
    Loop oLoop;
    const HandlePair oPipe;
    unsigned int nTold = 0;
    int nCalls = 0;
    const int nTicket =
        oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int nEvents) {
            nTold = nEvents;
            ++nCalls;
        });
    EXPECT_LT(0, nTicket);
    EXPECT_FALSE(oLoop.RunOnce(0));
    oPipe.Send("x");
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(2, nCalls);
    EXPECT_EQ(Loop::EVENT_READABLE, nTold);
    EXPECT_EQ("x", oPipe.Receive());
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_TRUE(oLoop.Cancel(nTicket));
    oPipe.Send("y");
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_FALSE(oLoop.IsActive(nTicket));
}

TEST(KorEventHandle, TellsOnlyWhatWasAskedForAndCanAskForOther)
{
    Loop oLoop;
    const HandlePair oPair(true);
    std::vector<unsigned int> vecTold;
    const int nTicket =
        oLoop.WatchHandle(oPair.Near(), Loop::EVENT_READABLE,
                          [&](unsigned int nEvents) { vecTold.push_back(nEvents); });
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_TRUE(oLoop.SetEvents(nTicket, Loop::EVENT_WRITABLE));
    EXPECT_TRUE(oLoop.RunOnce(0));
    oPair.Send("x");
    EXPECT_TRUE(oLoop.SetEvents(nTicket, Loop::EVENT_READABLE | Loop::EVENT_WRITABLE));
    EXPECT_TRUE(oLoop.RunOnce(0));
    EXPECT_TRUE(oLoop.SetEvents(nTicket, Loop::EVENT_HANGUP));
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_EQ((std::vector<unsigned int>{Loop::EVENT_WRITABLE,
                                         Loop::EVENT_READABLE | Loop::EVENT_WRITABLE}),
              vecTold);
}

TEST(KorEventHandle, TellsAHangUpAskedForOrNotWithWhatRemains)
{
    Loop oLoop;
    HandlePair oPipe;
    unsigned int nTold = 0;
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE,
                      [&](unsigned int nEvents) { nTold = nEvents; });
    oPipe.Send("x");
    oPipe.CloseFar();
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(Loop::EVENT_READABLE | Loop::EVENT_HANGUP, nTold);
    EXPECT_EQ("x", oPipe.Receive());
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(Loop::EVENT_HANGUP, nTold);
}

TEST(KorEventHandle, TellsAnErrorAsAHangUp)
{
    Loop oLoop;
    HandlePair oPipe;
    unsigned int nTold = 0;
    const std::string strFill(1 << 20, 'x');
    fcntl(oPipe.Far(), F_SETFL, O_NONBLOCK);
    while (write(oPipe.Far(), strFill.data(), strFill.size()) > 0) {
    }
    oLoop.WatchHandle(oPipe.Far(), Loop::EVENT_WRITABLE,
                      [&](unsigned int nEvents) { nTold = nEvents; });
    EXPECT_FALSE(oLoop.RunOnce(0));
    oPipe.CloseNear();
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_TRUE(nTold & Loop::EVENT_HANGUP);
}

TEST(KorEventHandle, DataDoNotWakeATicketForHangUpsAlone)
{
    Loop oLoop;
    HandlePair oPair(true);
    unsigned int nTold = 0;
    oLoop.WatchHandle(oPair.Near(), Loop::EVENT_HANGUP,
                      [&](unsigned int nEvents) { nTold = nEvents; });
    oPair.Send("x");
    EXPECT_FALSE(oLoop.RunOnce(30));
    oPair.CloseFar();
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(Loop::EVENT_HANGUP, nTold);
}

TEST(KorEventHandle, AFarEndThatOnlyStoppedSendingIsAHangUpForThoseThatAsk)
{
    Loop oLoop;
    const HandlePair oPair(true);
    unsigned int nAsked = 0;
    unsigned int nNotAsked = 0;
    oLoop.WatchHandle(oPair.Near(), Loop::EVENT_HANGUP,
                      [&](unsigned int nEvents) { nAsked = nEvents; });
    oLoop.WatchHandle(oPair.Near(), Loop::EVENT_READABLE,
                      [&](unsigned int nEvents) { nNotAsked = nEvents; });
    EXPECT_EQ(0, shutdown(oPair.Far(), SHUT_WR));
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(Loop::EVENT_HANGUP, nAsked);
    EXPECT_EQ(Loop::EVENT_READABLE, nNotAsked);
}

TEST(KorEventHandle, ServesSeveralTicketsOfOneHandle)
{
    Loop oLoop;
    const HandlePair oPair(true);
    std::vector<int> vecCalls(3, 0);
    const int nReader =
        oLoop.WatchHandle(oPair.Near(), Loop::EVENT_READABLE, [&](unsigned int) { ++vecCalls[0]; });
    const int nWriter =
        oLoop.WatchHandle(oPair.Near(), Loop::EVENT_WRITABLE, [&](unsigned int) { ++vecCalls[1]; });
    const int nSecond =
        oLoop.WatchHandle(oPair.Near(), Loop::EVENT_READABLE, [&](unsigned int) { ++vecCalls[2]; });
    oPair.Send("x");
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ((std::vector<int>{1, 1, 1}), vecCalls);
    EXPECT_TRUE(oLoop.Cancel(nWriter));
    EXPECT_TRUE(oLoop.Cancel(nReader));
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ((std::vector<int>{1, 1, 2}), vecCalls);
    EXPECT_EQ("x", oPair.Receive());
    EXPECT_FALSE(oLoop.RunOnce(0));
    EXPECT_TRUE(oLoop.IsActive(nSecond));
}

TEST(KorEventHandle, IsNotCalledWhenAnotherHandlerTookTheData)
{
    Loop oLoop;
    const HandlePair oPipe;
    int nCalls = 0;
    const auto Take = [&](unsigned int) {
        ++nCalls;
        EXPECT_EQ("x", oPipe.Receive()); // blocks when there is nothing
    };
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, Take);
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, Take);
    const int hCopy = dup(oPipe.Near());
    oLoop.WatchHandle(hCopy, Loop::EVENT_READABLE, Take);
    oPipe.Send("x");
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(1, nCalls);
    close(hCopy);
}

TEST(KorEventHandle, RefusesHandlesThatAreNotOpenAndEventsThatDoNotExist)
{
    Loop oLoop;
    const HandlePair oPipe;
    const auto Nothing = [](unsigned int) {};
    const int hClosed = dup(oPipe.Near());
    close(hClosed);
    for (const int nHandle : {-1, hClosed, 0x7FFFFFFF}) {
        errno = 0;
        EXPECT_EQ(-1, oLoop.WatchHandle(nHandle, Loop::EVENT_READABLE, Nothing));
        EXPECT_EQ(EBADF, errno);
    }
    const int nTicket = oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, Nothing);
    for (const unsigned int nEvents : {0u, 8u, 9u, 0xFFFFFFFFu}) {
        errno = 0;
        EXPECT_EQ(-1, oLoop.WatchHandle(oPipe.Near(), nEvents, Nothing));
        EXPECT_EQ(EINVAL, errno);
        errno = 0;
        EXPECT_FALSE(oLoop.SetEvents(nTicket, nEvents));
        EXPECT_EQ(EINVAL, errno);
    }
    errno = 0;
    EXPECT_FALSE(oLoop.SetEvents(oLoop.CallAfter(1, [] {}), Loop::EVENT_READABLE));
    EXPECT_EQ(EINVAL, errno);
    EXPECT_TRUE(oLoop.IsActive(nTicket));
}

TEST(KorEventHandle, RegularFilesAndTheNullDeviceAreAlwaysReady)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("file"), "");
    for (const std::string& strName : {oDir.File("file"), std::string("/dev/null")}) {
        Loop oLoop;
        const int hFile = open(strName.c_str(), O_RDWR | O_CLOEXEC);
        std::vector<unsigned int> vecTold;
        const int nTicket =
            oLoop.WatchHandle(hFile, Loop::EVENT_READABLE | Loop::EVENT_WRITABLE,
                              [&](unsigned int nEvents) { vecTold.push_back(nEvents); });
        EXPECT_LT(0, nTicket) << strName;
        EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
        EXPECT_TRUE(oLoop.SetEvents(nTicket, Loop::EVENT_READABLE));
        EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
        EXPECT_EQ((std::vector<unsigned int>{3, 1}), vecTold) << strName;
        EXPECT_TRUE(oLoop.SetEvents(nTicket, Loop::EVENT_HANGUP));
        EXPECT_FALSE(oLoop.RunOnce(10));
        EXPECT_TRUE(oLoop.Cancel(nTicket));
        EXPECT_FALSE(oLoop.RunOnce(0));
        close(hFile);
    }
}

TEST(KorEventHandle, SeveralThatAreAlwaysReadyMayGoInAnyOrder)
{
    Loop oLoop;
    std::vector<int> vecHandles;
    std::vector<int> vecTickets;
    std::vector<int> vecTold;
    for (int n = 0; n < 4; ++n) {
        vecHandles.push_back(open("/dev/null", O_RDWR | O_CLOEXEC));
        vecTickets.push_back(oLoop.WatchHandle(vecHandles.back(), Loop::EVENT_READABLE,
                                               [&, n](unsigned int) { vecTold.push_back(n); }));
    }
    const auto fnCancel = [&](size_t nPlace) {
        vecTold.clear();
        return oLoop.Cancel(vecTickets[nPlace]) && oLoop.RunOnce(PATIENCE_MS);
    };
    EXPECT_TRUE(fnCancel(3));
    EXPECT_EQ((std::vector<int>{0, 1, 2}), vecTold);
    EXPECT_TRUE(fnCancel(1));
    EXPECT_EQ((std::vector<int>{0, 2}), vecTold);
    EXPECT_TRUE(fnCancel(0));
    EXPECT_EQ((std::vector<int>{2}), vecTold);
    EXPECT_TRUE(oLoop.Cancel(vecTickets[2]));
    EXPECT_FALSE(oLoop.RunOnce(0));
    for (const int hFile : vecHandles)
        close(hFile);
}

TEST(KorEventHandle, WhatIsReadyStaysWhenTheRoundIsLeft)
{
    constexpr size_t HANDLES = 100;
    Loop oLoop;
    std::vector<std::unique_ptr<HandlePair>> vecPipes;
    size_t nCalls = 0;
    for (size_t nPipe = 0; nPipe < HANDLES; ++nPipe) {
        vecPipes.push_back(std::make_unique<HandlePair>());
        const HandlePair& oPipe = *vecPipes.back();
        oPipe.Send("x");
        oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) {
            oPipe.Receive();
            ++nCalls;
            oLoop.Stop();
        });
    }
    for (size_t nRun = 1; nRun <= HANDLES; ++nRun) {
        EXPECT_EQ(0, oLoop.Run());
        EXPECT_EQ(nRun, nCalls);
    }
    EXPECT_FALSE(oLoop.RunOnce(0));
}

TEST(KorEventHandle, ABusyHandleLeavesTimeToTheOthers)
{
    Loop oLoop;
    const HandlePair oPipe;
    oPipe.Send("x");
    int nTimer = 0;
    oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [](unsigned int) {});
    oLoop.CallAfter(5, [&] { ++nTimer; });
    RunUntil(oLoop, [&] { return nTimer == 1; });
}

} // namespace
