#include "tests/serial/LineTestPeer.h"

#include <csignal>
#include <random>
#include <sys/time.h>

namespace
{

using Clock = std::chrono::steady_clock;

/// Keeps interrupting this process, and calls in it, while it lives.
class Interruptions
{
public:
    Interruptions()
    {
        struct sigaction oAction = {};
        oAction.sa_handler = [](int) {};
        sigaction(SIGALRM, &oAction, &m_oBefore); // without SA_RESTART
        const itimerval oTimes = {{0, 500}, {0, 500}};
        setitimer(ITIMER_REAL, &oTimes, nullptr);
    }
    ~Interruptions()
    {
        const itimerval oNever = {};
        setitimer(ITIMER_REAL, &oNever, nullptr);
        sigaction(SIGALRM, &m_oBefore, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

private:
    struct sigaction m_oBefore;
};

std::string RandomBytes(std::size_t nCount)
{
    std::mt19937 oRandom(1);
    std::string strBytes;
    while (strBytes.size() < nCount)
        strBytes += static_cast<char>(oRandom());
    return strBytes;
}

} // namespace

TEST(KorSerialLineRead, ReadTakesWhatComesFirst)
{
    TestLine oTest;
    std::string strData;
    Caller oPeer([&oTest]() { oTest.m_oPeer.Send("abc"); });
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Read(100, strData, LONG)));
    EXPECT_EQ("abc", strData);
}

TEST(KorSerialLineRead, ReadTakesAtMostWhatIsAskedAndKeepsTheRest)
{
    TestLine oTest;
    std::string strData;
    oTest.Arrive("abcdef");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Read(2, strData, LONG)));
    EXPECT_EQ("ab", strData);
    EXPECT_EQ(4U, oTest.m_oLine.GetHeldCount());
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Read(0, strData, 0)));
    EXPECT_EQ("", strData);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Read(100, strData, 0)));
    EXPECT_EQ("cdef", strData);
}

TEST(KorSerialLineRead, ReadAddsWhatTheKernelHasToWhatIsHeld)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("ab");
    oTest.Arrive("cd");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Read(100, strData, 0)));
    EXPECT_EQ("abcd", strData);
}

TEST(KorSerialLineRead, ATimeOutLeavesDataAndBytes)
{
    TestLine oTest;
    std::string strData = "kept";
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)));
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 1)));
    oTest.Hold("abc");
    for (const unsigned int nTimeout : {0U, 3U}) {
        EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(4, strData, nTimeout)));
        EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("d", strData, nTimeout)));
        EXPECT_EQ(TIMED_OUT,
                  Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(600000000, strData, nTimeout)));
    }
    EXPECT_EQ("kept", strData);
    oTest.m_oPeer.Send("d");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(4, strData, LONG)));
    EXPECT_EQ("abcd", strData);
}

TEST(KorSerialLineRead, ATimeOutIsTheTotalOfItsCall)
{
    TestLine oTest;
    std::string strData;
    const auto oStart = Clock::now();
    std::atomic<bool> bEnough{false};
    Caller oPeer([&]() { // never lets the line rest for as long as the time-out
        while (!bEnough) {
            oTest.m_oPeer.Send(".");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("!", strData, 50)));
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(100000, strData, 50)));
    EXPECT_GE(Clock::now() - oStart, std::chrono::milliseconds(100));
    bEnough = true;
}

TEST(KorSerialLineRead, ATimeOutEndsACallThatAlwaysFindsBytes)
{
    TestLine oTest;
    const int nLine = oTest.m_oLine.GetHandle();
    int nBlocks = 0;
    oTest.m_oLine.SetTrace([&](bool, const char*, unsigned int) { // each read finds bytes
        pollfd oLine = {nLine, POLLIN, 0};
        oTest.m_oPeer.Send(".");
        EXPECT_EQ(1, poll(&oLine, 1, PATIENCE_MS));
        ++nBlocks;
    });
    std::string strData;
    oTest.Arrive(".");
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(FOREVER, strData, 20)));
    EXPECT_GT(nBlocks, 0);
}

TEST(KorSerialLineRead, ReadBytesTakesExactly)
{
    TestLine oTest;
    std::string strData;
    oTest.m_oPeer.Send("abcdef");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(4, strData, FOREVER)));
    EXPECT_EQ("abcd", strData);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(2, strData, FOREVER)));
    EXPECT_EQ("ef", strData);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(0, strData, FOREVER)));
    EXPECT_EQ("", strData);
}

TEST(KorSerialLineRead, TimeOutZeroTakesAllThatIsThere)
{
    TestLine oTest;
    const std::string strBytes = RandomBytes(4000);
    oTest.m_oPeer.Send(strBytes);
    std::string strData;
    EXPECT_TRUE(WaitUntil(
        [&]() { return oTest.m_oLine.ReadBytes(4000, strData, 0) == CKorSerial::SERIAL_OK; }));
    EXPECT_EQ(strBytes, strData);
}

TEST(KorSerialLineRead, ReadUntilGivesTheDelimiterTooAndLosesNothingBehindIt)
{
    TestLine oTest;
    std::string strData;
    oTest.m_oPeer.Send("one\r\ntwo\r\nthr");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("\r\n", strData, LONG)));
    EXPECT_EQ("one\r\n", strData);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("\r\n", strData, LONG)));
    EXPECT_EQ("two\r\n", strData);
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("\r\n", strData, 1)));
    oTest.m_oPeer.Send("ee\r\n");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("\r\n", strData, LONG)));
    EXPECT_EQ("three\r\n", strData);
}

TEST(KorSerialLineRead, ReadUntilFindsADelimiterThatComesInParts)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("aab");
    for (const char cNext : std::string("aaba")) {
        EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("aabac", strData, 1)));
        oTest.Arrive(std::string(1, cNext));
    }
    oTest.m_oPeer.Send("c");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("aabac", strData, LONG)));
    EXPECT_EQ("aabaabac", strData);
}

TEST(KorSerialLineRead, ReadUntilSearchesAnewForAnotherDelimiter)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("ab;cd");
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("x", strData, 0)));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil(";", strData, 0)));
    EXPECT_EQ("ab;", strData);
    oTest.m_oPeer.Send("x");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("x", strData, LONG)));
    EXPECT_EQ("cdx", strData);
}

TEST(KorSerialLineRead, ReadUntilTakesBinaryDelimiters)
{
    TestLine oTest;
    std::string strData;
    const std::string strFrame("\x01\0\x02\0\0", 5);
    oTest.m_oPeer.Send(strFrame);
    EXPECT_EQ(DONE,
              Told(oTest.m_oLine, oTest.m_oLine.ReadUntil(std::string(2, '\0'), strData, LONG)));
    EXPECT_EQ(strFrame, strData);
}

TEST(KorSerialLineRead, ReadUntilRefusesAnEmptyDelimiter)
{
    TestLine oTest;
    std::string strData = "kept";
    EXPECT_EQ(Refused(EINVAL), Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("", strData, LONG)));
    EXPECT_EQ("kept", strData);
}

TEST(KorSerialLineRead, ReadUntilKeepsDataThatAreTooLong)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("abcdef;g");
    EXPECT_EQ(Refused(EMSGSIZE),
              Told(oTest.m_oLine, oTest.m_oLine.ReadUntil(";", strData, LONG, 6)));
    EXPECT_EQ(Refused(EMSGSIZE),
              Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("?", strData, LONG, 8)));
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("?", strData, 1, 9)));
    EXPECT_EQ(8U, oTest.m_oLine.GetHeldCount());
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil(";", strData, LONG, 7)));
    EXPECT_EQ("abcdef;", strData);
}

TEST(KorSerialLineRead, DataThatAreTooLongDoNotGrow)
{
    TestLine oTest;
    std::string strData;
    oTest.m_oPeer.Send(std::string(3000, 'x'));
    EXPECT_EQ(Refused(EMSGSIZE),
              Told(oTest.m_oLine, oTest.m_oLine.ReadUntil(";", strData, LONG, 100)));
    const unsigned int nHeld = oTest.m_oLine.GetHeldCount();
    oTest.Arrive(std::string(1000, 'x'));
    EXPECT_EQ(Refused(EMSGSIZE),
              Told(oTest.m_oLine, oTest.m_oLine.ReadUntil(";", strData, LONG, 100)));
    EXPECT_EQ(Refused(EMSGSIZE),
              Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(1, strData, LONG, 99)));
    EXPECT_EQ(nHeld, oTest.m_oLine.GetHeldCount());
}

TEST(KorSerialLineRead, HoldsAMegabyteAndGivesItLineByLine)
{
    TestLine oTest;
    constexpr unsigned int LINES = 16384;
    std::string strLine(63, 'x');
    strLine += '\n';
    Caller oPeer([&]() {
        for (unsigned int i = 0; i < LINES; ++i)
            oTest.m_oPeer.Send(strLine);
        oTest.m_oPeer.Send("!");
    });
    std::string strData;
    while (oTest.m_oLine.ReadUntil("?", strData, 1, 2000000) == CKorSerial::SERIAL_WOULDBLOCK &&
           oTest.m_oLine.GetHeldCount() <= LINES * 64) {
    }
    for (unsigned int i = 0; i < LINES; ++i) {
        ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("\n", strData, 0)));
        ASSERT_EQ(strLine, strData);
    }
    EXPECT_EQ(1U, oTest.m_oLine.GetHeldCount());
}

TEST(KorSerialLineRead, RandomReadsAgreeWithAPlainString)
{
    TestLine oTest;
    std::mt19937 oRandom(3);
    std::string strModel;
    std::string strData;
    for (int i = 0; i < 3000; ++i) {
        std::string strSent;
        for (const std::size_t n = oRandom() % 6; strSent.size() < n;)
            strSent += "ab;"[oRandom() % 3];
        oTest.m_oPeer.Send(strSent);
        strModel += strSent;
        const std::string strDelimiter = oRandom() % 2 == 0 ? ";" : "a;";
        const std::size_t nFound = strModel.find(strDelimiter);
        const std::size_t nBytes = 1 + oRandom() % 9;
        std::size_t nTaken = 0;
        if (oRandom() % 2 == 0 && nFound != std::string::npos) {
            ASSERT_EQ(DONE,
                      Told(oTest.m_oLine, oTest.m_oLine.ReadUntil(strDelimiter, strData, LONG)));
            nTaken = nFound + strDelimiter.size();
        } else if (strModel.size() >= nBytes) {
            ASSERT_EQ(DONE,
                      Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(static_cast<unsigned int>(nBytes),
                                                                  strData, LONG)));
            nTaken = nBytes;
        } else {
            continue;
        }
        ASSERT_EQ(strModel.substr(0, nTaken), strData);
        strModel.erase(0, nTaken);
    }
}

TEST(KorSerialLineRead, DiscardInputDropsWhatIsHeldAndWhatTheKernelHas)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("held");
    oTest.Arrive("not read");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.DiscardInput()));
    EXPECT_EQ(0U, oTest.m_oLine.GetHeldCount());
    oTest.m_oPeer.Send("new");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(3, strData, LONG)));
    EXPECT_EQ("new", strData);
}

TEST(KorSerialLineRead, SignalsInterruptAndLoseNothing)
{
    TestLine oTest;
    const Interruptions oInterruptions;
    const std::string strBytes = RandomBytes(200000);
    Caller oPeer([&]() { // slowly, so that reads wait
        sigset_t oAll;
        sigfillset(&oAll);
        pthread_sigmask(SIG_BLOCK, &oAll, nullptr);
        for (std::size_t i = 0; i < strBytes.size(); i += 1000)
            oTest.m_oPeer.Send(strBytes.substr(i, 1000));
    });
    std::string strData;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(200000, strData, LONG)));
    EXPECT_EQ(strBytes, strData);
    const auto oStart = Clock::now();
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 60)));
    EXPECT_GE(Clock::now() - oStart, std::chrono::milliseconds(60));
}
