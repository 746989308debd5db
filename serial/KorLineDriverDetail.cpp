#include "serial/KorLineDriverDetail.h"

#include <cerrno>
#include <sys/ioctl.h>

namespace
{

constexpr unsigned int TRANSMITTER_EMPTY = 1; // TIOCSER_TEMT, which not all headers show

/// 0 or the error of a call that only asks: where the driver lacks it, it has nothing to refuse.
int AnswerOf(int nResult)
{
    if (nResult == 0)
        return 0;
    return errno == ENOTTY || errno == EINVAL || errno == ENOSYS ? EOPNOTSUPP : errno;
}

/// 0 or the error of a call that changes something: EINVAL is a refusal.
int OutcomeOf(int nResult)
{
    if (nResult == 0)
        return 0;
    return errno == ENOTTY || errno == ENOSYS ? EOPNOTSUPP : errno;
}

void Switch(unsigned int& rnFlags, unsigned int nFlag, bool bOn)
{
    rnFlags = bOn ? rnFlags | nFlag : rnFlags & ~nFlag;
}

} // namespace

int KorGetModemLines(int hLine, SKorModemLines& rLines)
{
    unsigned int nLines = 0;
    const int nErrno = AnswerOf(ioctl(hLine, TIOCMGET, &nLines));
    if (nErrno != 0)
        return nErrno;
    rLines.m_bCts = (nLines & TIOCM_CTS) != 0;
    rLines.m_bDsr = (nLines & TIOCM_DSR) != 0;
    rLines.m_bDcd = (nLines & TIOCM_CAR) != 0;
    rLines.m_bRing = (nLines & TIOCM_RNG) != 0;
    rLines.m_bRts = (nLines & TIOCM_RTS) != 0;
    rLines.m_bDtr = (nLines & TIOCM_DTR) != 0;
    return 0;
}

int KorSetModemLines(int hLine, bool bRts, bool bDtr)
{
    unsigned int nLines = 0;
    const int nErrno = AnswerOf(ioctl(hLine, TIOCMGET, &nLines));
    if (nErrno != 0)
        return nErrno;
    Switch(nLines, TIOCM_RTS, bRts);
    Switch(nLines, TIOCM_DTR, bDtr);
    return OutcomeOf(ioctl(hLine, TIOCMSET, &nLines));
}

int KorGetLineCounts(int hLine, SKorLineCounts& rCounts)
{
    serial_icounter_struct oCounts = {};
    const int nErrno = AnswerOf(ioctl(hLine, TIOCGICOUNT, &oCounts));
    if (nErrno != 0)
        return nErrno;
    rCounts.m_nFrame = static_cast<unsigned int>(oCounts.frame);
    rCounts.m_nOverrun = static_cast<unsigned int>(oCounts.overrun);
    rCounts.m_nParity = static_cast<unsigned int>(oCounts.parity);
    rCounts.m_nBreak = static_cast<unsigned int>(oCounts.brk);
    rCounts.m_nBufferOverrun = static_cast<unsigned int>(oCounts.buf_overrun);
    return 0;
}

int KorGetLineRS485(int hLine, serial_rs485& rRS485)
{
    return AnswerOf(ioctl(hLine, TIOCGRS485, &rRS485));
}

int KorSetLineRS485(int hLine, const serial_rs485& oRS485)
{
    serial_rs485 oAsked = oRS485; // the driver writes back what it made of it
    return OutcomeOf(ioctl(hLine, TIOCSRS485, &oAsked));
}

serial_rs485 KorMakeLineRS485(serial_rs485 oBefore, const SKorRS485& oRS485)
{
    unsigned int nFlags = oBefore.flags;
    Switch(nFlags, SER_RS485_ENABLED, oRS485.m_bEnabled);
    Switch(nFlags, SER_RS485_RTS_ON_SEND, oRS485.m_bRtsOnSend);
    Switch(nFlags, SER_RS485_RTS_AFTER_SEND, oRS485.m_bRtsAfterSend);
    Switch(nFlags, SER_RS485_RX_DURING_TX, oRS485.m_bReceiveOwn);
    oBefore.flags = nFlags;
    oBefore.delay_rts_before_send = oRS485.m_nDelayBefore;
    oBefore.delay_rts_after_send = oRS485.m_nDelayAfter;
    return oBefore;
}

int KorGetLowLatency(int hLine, bool& rbLowLatency)
{
    serial_struct oDriver = {};
    const int nErrno = AnswerOf(ioctl(hLine, TIOCGSERIAL, &oDriver));
    rbLowLatency = (static_cast<unsigned int>(oDriver.flags) & ASYNC_LOW_LATENCY) != 0;
    return nErrno;
}

int KorSetLowLatency(int hLine, bool bLowLatency)
{
    serial_struct oDriver = {};
    const int nErrno = AnswerOf(ioctl(hLine, TIOCGSERIAL, &oDriver));
    if (nErrno != 0)
        return nErrno;
    unsigned int nFlags = static_cast<unsigned int>(oDriver.flags);
    Switch(nFlags, ASYNC_LOW_LATENCY, bLowLatency);
    oDriver.flags = static_cast<int>(nFlags);
    return OutcomeOf(ioctl(hLine, TIOCSSERIAL, &oDriver));
}

int KorSetLineBreak(int hLine, bool bBreak)
{
    return OutcomeOf(ioctl(hLine, bBreak ? TIOCSBRK : TIOCCBRK));
}

int KorCountUnsentBytes(int hLine, unsigned int& rnBytes)
{
    int nBytes = 0;
    const int nErrno = AnswerOf(ioctl(hLine, TIOCOUTQ, &nBytes));
    if (nErrno != 0)
        return nErrno;
    unsigned int nHardware = 0;
    const bool bSending = nBytes == 0 && ioctl(hLine, TIOCSERGETLSR, &nHardware) == 0 &&
                          (nHardware & TRANSMITTER_EMPTY) == 0;
    rnBytes = bSending ? 1U : static_cast<unsigned int>(nBytes);
    return 0;
}
