#include "serial/KorSerialLine.h"

#include "tests/serial/LineListener.h"
#include "tests/serial/LineOptions.h"
#include "tests/support/CallWatch.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>

// A program of its own, because it answers for the driver of the line: pseudo-terminals have no
// modem lines, no RS-485, no latency, no hardware.

extern bool (*g_pfnDriver)(unsigned int nRequest, void* pArgument, int& rnResult);
extern int (*g_pDecideOnCall)(const char* pszCall); // of the calls for files

namespace
{

/// What a driver of real hardware keeps.
struct Driver
{
    unsigned int nLines = 0;
    serial_rs485 oRS485 = {};
    serial_struct oSerial = {};
    serial_icounter_struct oCounts = {};
    int nUnsent = 0;
    int nBusy = 0; // how often the hardware is asked until it has sent all
    bool bTellsOfHardware = true;
    int nFlushes = 0; // of the output
};

Driver g_oDriver;
std::atomic<bool> g_bRefused{false};

bool IsMainThread()
{
    return ThreadId() == getpid();
}

template <typename TValue>
bool Get(void* pArgument, const TValue& oValue)
{
    *static_cast<TValue*>(pArgument) = oValue;
    return true;
}

template <typename TValue>
bool Set(TValue& rValue, const void* pArgument)
{
    rValue = *static_cast<const TValue*>(pArgument);
    return true;
}

bool TellOfHardware(void* pArgument, int& rnResult)
{
    constexpr unsigned int EMPTY = 1;
    if (!g_oDriver.bTellsOfHardware) {
        errno = ENOTTY;
        rnResult = -1;
        return true;
    }
    return Get(pArgument, g_oDriver.nBusy-- > 0 ? 0U : EMPTY);
}

bool Answer(unsigned int nRequest, void* pArgument, int& rnResult)
{
    rnResult = 0;
    switch (nRequest) {
    case TIOCMGET:
        return Get(pArgument, g_oDriver.nLines);
    case TIOCMSET:
        return Set(g_oDriver.nLines, pArgument);
    case TIOCGRS485:
        return Get(pArgument, g_oDriver.oRS485);
    case TIOCSRS485:
        return Set(g_oDriver.oRS485, pArgument);
    case TIOCGSERIAL:
        return Get(pArgument, g_oDriver.oSerial);
    case TIOCSSERIAL:
        return Set(g_oDriver.oSerial, pArgument);
    case TIOCGICOUNT:
        return Get(pArgument, g_oDriver.oCounts);
    case TIOCOUTQ:
        return Get(pArgument, g_oDriver.nUnsent);
    case TIOCSERGETLSR:
        return TellOfHardware(pArgument, rnResult);
    case TCFLSH:
        g_oDriver.nFlushes += reinterpret_cast<std::uintptr_t>(pArgument) == TCOFLUSH ? 1 : 0;
        return false;
    default:
        return false;
    }
}

class KorSerialLineDriver : public testing::Test
{
protected:
    KorSerialLineDriver()
    {
        g_oDriver = Driver();
        g_pfnDriver = Answer;
    }
    ~KorSerialLineDriver() override { g_pfnDriver = nullptr; }

    PseudoTerminal m_oPeer;
    CKorSerialLine m_oLine;
};

TEST_F(KorSerialLineDriver, ShowsEachModemLineByItself)
{
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    const std::pair<unsigned int, bool SKorModemLines::*> aLines[] = {
        {TIOCM_CTS, &SKorModemLines::m_bCts}, {TIOCM_DSR, &SKorModemLines::m_bDsr},
        {TIOCM_CAR, &SKorModemLines::m_bDcd}, {TIOCM_RNG, &SKorModemLines::m_bRing},
        {TIOCM_RTS, &SKorModemLines::m_bRts}, {TIOCM_DTR, &SKorModemLines::m_bDtr},
    };
    for (const auto& oSet : aLines) {
        g_oDriver.nLines = oSet.first;
        SKorModemLines oShown;
        ASSERT_EQ(0, m_oLine.GetModemLines(oShown));
        for (const auto& oLine : aLines)
            EXPECT_EQ(oLine.first == oSet.first, oShown.*oLine.second) << oLine.first;
    }
}

TEST_F(KorSerialLineDriver, SetsTheOutputsAlone)
{
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    EXPECT_EQ(TIOCM_RTS | TIOCM_DTR, static_cast<int>(g_oDriver.nLines));
    g_oDriver.nLines |= TIOCM_CTS;
    EXPECT_EQ(0, m_oLine.SetModemLines(CKorSerial::RTS_OFF, CKorSerial::DTR_ON));
    EXPECT_EQ(TIOCM_CTS | TIOCM_DTR, static_cast<int>(g_oDriver.nLines));
    EXPECT_EQ(0, m_oLine.SetModemLines(CKorSerial::RTS_ON, CKorSerial::DTR_OFF));
    EXPECT_EQ(TIOCM_CTS | TIOCM_RTS, static_cast<int>(g_oDriver.nLines));
}

TEST_F(KorSerialLineDriver, OpensWithTheOutputsThatWereAskedForAndLeavesRtsToTheDriver)
{
    SKorLineOptions oOptions;
    oOptions.m_bRts = false;
    oOptions.m_bDtr = false;
    g_oDriver.nLines = TIOCM_RTS | TIOCM_DTR | TIOCM_CAR;
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name(), oOptions));
    EXPECT_EQ(TIOCM_CAR, static_cast<int>(g_oDriver.nLines));
    oOptions.m_eFlow = SKorLineOptions::FLOW_RTS_CTS;
    g_oDriver.nLines = TIOCM_RTS | TIOCM_DTR;
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name(), oOptions));
    EXPECT_EQ(TIOCM_RTS, static_cast<int>(g_oDriver.nLines));
}

TEST_F(KorSerialLineDriver, TellsTheDriverOfTwoWiresAndGivesBackWhatItHad)
{
    g_oDriver.oRS485.flags = SER_RS485_TERMINATE_BUS | SER_RS485_RTS_AFTER_SEND;
    g_oDriver.oRS485.delay_rts_before_send = 7;
    SKorLineOptions oOptions;
    oOptions.m_oRS485 = {true, true, false, true, 3, 4};
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name(), oOptions));
    EXPECT_EQ(SER_RS485_TERMINATE_BUS | SER_RS485_ENABLED | SER_RS485_RTS_ON_SEND |
                  SER_RS485_RX_DURING_TX,
              static_cast<int>(g_oDriver.oRS485.flags));
    EXPECT_EQ(3U, g_oDriver.oRS485.delay_rts_before_send);
    EXPECT_EQ(4U, g_oDriver.oRS485.delay_rts_after_send);
    EXPECT_EQ(0, m_oLine.SetRS485({true, false, true, false, 0, 1}));
    EXPECT_EQ(SER_RS485_TERMINATE_BUS | SER_RS485_ENABLED | SER_RS485_RTS_AFTER_SEND,
              static_cast<int>(g_oDriver.oRS485.flags));
    m_oLine.Close();
    EXPECT_EQ(SER_RS485_TERMINATE_BUS | SER_RS485_RTS_AFTER_SEND,
              static_cast<int>(g_oDriver.oRS485.flags));
    EXPECT_EQ(7U, g_oDriver.oRS485.delay_rts_before_send);
}

TEST_F(KorSerialLineDriver, AsksForLowLatencyAndGivesBackWhatTheLineHad)
{
    for (const int nBefore : {0, static_cast<int>(ASYNC_LOW_LATENCY)}) {
        g_oDriver.oSerial.flags = static_cast<int>(ASYNC_SKIP_TEST) | nBefore;
        ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
        EXPECT_EQ(0, m_oLine.SetLowLatency(true));
        EXPECT_EQ(static_cast<int>(ASYNC_SKIP_TEST | ASYNC_LOW_LATENCY), g_oDriver.oSerial.flags);
        EXPECT_EQ(0, m_oLine.SetLowLatency(false));
        EXPECT_EQ(static_cast<int>(ASYNC_SKIP_TEST), g_oDriver.oSerial.flags);
        m_oLine.Close();
        EXPECT_EQ(static_cast<int>(ASYNC_SKIP_TEST) | nBefore, g_oDriver.oSerial.flags);
    }
}

TEST_F(KorSerialLineDriver, ReadsTheCountsOfErrors)
{
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    g_oDriver.oCounts.frame = 1;
    g_oDriver.oCounts.overrun = 2;
    g_oDriver.oCounts.parity = 3;
    g_oDriver.oCounts.brk = 4;
    g_oDriver.oCounts.buf_overrun = 5;
    SKorLineCounts oCounts;
    ASSERT_EQ(0, m_oLine.GetErrorCounts(oCounts));
    EXPECT_EQ(1U, oCounts.m_nFrame);
    EXPECT_EQ(2U, oCounts.m_nOverrun);
    EXPECT_EQ(3U, oCounts.m_nParity);
    EXPECT_EQ(4U, oCounts.m_nBreak);
    EXPECT_EQ(5U, oCounts.m_nBufferOverrun);
}

TEST_F(KorSerialLineDriver, DrainsTheKernelAndTheHardware)
{
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    EXPECT_EQ(0, m_oLine.Drain(0));
    g_oDriver.nBusy = 1;
    EXPECT_EQ(CKorSerial::SERIAL_WOULDBLOCK, m_oLine.Drain(0));
    g_oDriver.nBusy = 3;
    EXPECT_EQ(0, m_oLine.Drain(PATIENCE_MS));
    EXPECT_GE(0, g_oDriver.nBusy);
    g_oDriver.nUnsent = 1;
    EXPECT_EQ(CKorSerial::SERIAL_WOULDBLOCK, m_oLine.Drain(0));
}

TEST_F(KorSerialLineDriver, DrainsTheKernelAloneWhereTheHardwareIsUnknown)
{
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    g_oDriver.bTellsOfHardware = false;
    EXPECT_EQ(0, m_oLine.Drain(0));
}

TEST_F(KorSerialLineDriver, CloseDiscardsWhatIsUnsentAndOnlyThat)
{
    for (const int nUnsent : {0, 9}) {
        ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
        g_oDriver.nUnsent = nUnsent;
        g_oDriver.nFlushes = 0;
        m_oLine.Close();
        EXPECT_EQ(nUnsent == 0 ? 0 : 1, g_oDriver.nFlushes);
    }
}

TEST_F(KorSerialLineDriver, OpensAlsoWhenASignalComesInBetween)
{
    int nOpened = 0;
    const CallWatch oWatch([&nOpened](const std::string& strCall) {
        return strCall == "open" && ++nOpened == 1 ? EINTR : 0;
    });
    EXPECT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    EXPECT_EQ(2, nOpened);
}

/// The first read of another thread finds nothing.
int RefuseARead(const char* pszCall)
{
    const bool bRefused =
        !IsMainThread() && std::strcmp(pszCall, "read") == 0 && !g_bRefused.exchange(true);
    return bRefused ? EAGAIN : 0;
}

TEST_F(KorSerialLineDriver, InputThatIsGoneAgainIsNoHangUpOfTheReception)
{
    Listener oListener;
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    const auto pfnFormer = std::exchange(g_pDecideOnCall, RefuseARead);
    EXPECT_EQ(0, m_oLine.StartReception(oListener.Data(), oListener.Hangup()));
    m_oPeer.Send("x");
    EXPECT_EQ("x", oListener.Await(1));
    m_oLine.Close();
    g_pDecideOnCall = pfnFormer;
    EXPECT_TRUE(g_bRefused);
}

TEST_F(KorSerialLineDriver, DropsNoExclusiveModeThatBecameSomebodyElses)
{
    const Descriptor oOther(m_oPeer);
    ASSERT_EQ(0, m_oLine.Open(m_oPeer.Name()));
    ASSERT_EQ(0, m_oLine.SetOptions(Shared()));
    ASSERT_EQ(0, ioctl(oOther.m_nHandle, TIOCEXCL));
    m_oLine.Close();
    EXPECT_TRUE(oOther.IsExclusive());
}

} // namespace
