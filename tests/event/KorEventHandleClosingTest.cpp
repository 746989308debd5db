#include "tests/event/EventTestSupport.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <memory>

namespace
{

using Loop = CKorEventLoop;

TEST(KorEventHandle, IsDroppedWhenItIsClosed)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("file"), "");
    Loop oLoop;
    HandlePair oPipe;
    oPipe.Send("x");
    auto pHeld = std::make_shared<int>(1);
    const std::weak_ptr<int> pSeen = pHeld;
    const auto Fail = [pHeld](unsigned int) { ADD_FAILURE() << "called for a closed handle"; };
    pHeld.reset();
    const int hFile = open(oDir.File("file").c_str(), O_RDONLY | O_CLOEXEC);
    const int nPipe = oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, Fail);
    const int nFile = oLoop.WatchHandle(hFile, Loop::EVENT_READABLE, Fail);
    oPipe.CloseNear();
    close(hFile);
    EXPECT_FALSE(oLoop.RunOnce(20));
    for (const int nTicket : {nPipe, nFile}) {
        EXPECT_FALSE(oLoop.IsActive(nTicket));
        errno = 0;
        EXPECT_FALSE(oLoop.SetEvents(nTicket, Loop::EVENT_READABLE));
        EXPECT_FALSE(oLoop.Cancel(nTicket));
    }
}

TEST(KorEventHandle, IsDroppedAlsoWhenACopyKeepsTheFileOpen)
{
    Loop oLoop;
    HandlePair oPipe;
    const int hCopy = dup(oPipe.Near());
    int nCalls = 0;
    const int nTicket =
        oLoop.WatchHandle(oPipe.Near(), Loop::EVENT_READABLE, [&](unsigned int) { ++nCalls; });
    const int hNumber = oPipe.Near();
    oPipe.CloseNear();
    oPipe.Send("x");
    const long long nBefore = ProcessorTimeUs();
    EXPECT_FALSE(oLoop.RunOnce(500));
    EXPECT_GT(10000, ProcessorTimeUs() - nBefore) << "the old registration keeps waking the loop";
    EXPECT_FALSE(oLoop.IsActive(nTicket));
    EXPECT_EQ(hNumber, dup(hCopy)) << "the same open file under the same number again";
    int nNewCalls = 0;
    EXPECT_LT(0,
              oLoop.WatchHandle(hNumber, Loop::EVENT_READABLE, [&](unsigned int) { ++nNewCalls; }));
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_EQ(0, nCalls);
    EXPECT_EQ(1, nNewCalls);
    close(hNumber);
    close(hCopy);
}

TEST(KorEventHandle, HasNothingToDoWithTheNextOneOfItsNumber)
{
    for (const bool bCopy : {false, true}) {
        Loop oLoop;
        HandlePair oOld;
        const int hCopy = bCopy ? dup(oOld.Near()) : -1;
        int nOldCalls = 0;
        int nNewCalls = 0;
        const int nOld = oLoop.WatchHandle(oOld.Near(), Loop::EVENT_READABLE,
                                           [&](unsigned int) { ++nOldCalls; });
        oOld.Send("x");
        const int hNumber = oOld.Near();
        oOld.CloseNear();
        const HandlePair oNew;
        ASSERT_EQ(hNumber, oNew.Near());
        EXPECT_FALSE(oLoop.IsActive(nOld));
        const int nNew = oLoop.WatchHandle(oNew.Near(), Loop::EVENT_READABLE,
                                           [&](unsigned int) { ++nNewCalls; });
        EXPECT_FALSE(oLoop.RunOnce(20));
        EXPECT_FALSE(oLoop.Cancel(nOld));
        EXPECT_TRUE(oLoop.IsActive(nNew));
        oNew.Send("y");
        EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
        EXPECT_EQ(0, nOldCalls);
        EXPECT_EQ(1, nNewCalls);
        close(hCopy);
    }
}

TEST(KorEventHandle, MayBeClosedAndReplacedByAHandlerOfTheSameRound)
{
    Loop oLoop;
    HandlePair oFirst;
    HandlePair oSecond;
    std::unique_ptr<HandlePair> pNew;
    int nCalls = 0;
    const auto Replace = [&](HandlePair& oOther, const HandlePair& oOwn) {
        ++nCalls;
        oOwn.Receive();
        oOther.CloseNear();
        pNew = std::make_unique<HandlePair>();
        pNew->Send("z");
    };
    oLoop.WatchHandle(oFirst.Near(), Loop::EVENT_READABLE,
                      [&](unsigned int) { Replace(oSecond, oFirst); });
    oLoop.WatchHandle(oSecond.Near(), Loop::EVENT_READABLE,
                      [&](unsigned int) { Replace(oFirst, oSecond); });
    oFirst.Send("x");
    oSecond.Send("y");
    EXPECT_TRUE(oLoop.RunOnce(PATIENCE_MS));
    EXPECT_FALSE(oLoop.RunOnce(20)) << "the number is another handle's now";
    EXPECT_EQ(1, nCalls);
}

} // namespace
