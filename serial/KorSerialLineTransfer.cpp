#include "serial/KorLineCallDetail.h"
#include "serial/KorLineDriverDetail.h"
#include "serial/KorSerialLine.h"

#include <algorithm>
#include <poll.h>
#include <termios.h>

namespace
{

constexpr std::int64_t NS_PER_US = 1000;
constexpr std::int64_t NS_PER_MS = 1000000;

/// What a call waits for: a number of bytes, or all up to the end of a delimiter.
struct SWanted
{
    const std::string* m_pstrDelimiter;
    unsigned int m_nCount; ///< of the bytes, or the most that the delimiter may end
};

/// Looks whether the held bytes are what is wanted: 0 and how many, an error number, or EAGAIN.
int Judge(CKorLineBuffer& rHeld, const SWanted& oWanted, std::size_t& rnCount)
{
    rnCount = oWanted.m_nCount;
    if (oWanted.m_pstrDelimiter == nullptr)
        return rHeld.Size() >= rnCount ? 0 : EAGAIN;
    if (oWanted.m_pstrDelimiter->empty())
        return EINVAL;
    rnCount = rHeld.FindEnd(*oWanted.m_pstrDelimiter, oWanted.m_nCount);
    if (rnCount != CKorLineBuffer::NOT_FOUND)
        return 0;
    return rHeld.Size() >= oWanted.m_nCount ? EMSGSIZE : EAGAIN;
}

/// Receives until the held bytes are what is wanted, and takes it.
int Take(CKorLineState& oState, const SWanted& oWanted, std::string& strData, unsigned int nTimeout)
{
    CKorLineCall oCall(oState);
    CKorLineDeadline oDeadline(nTimeout);
    int nErrno = oCall.CheckReading();
    while (nErrno == 0) {
        std::size_t nCount = 0;
        nErrno = Judge(oState.m_oHeld, oWanted, nCount);
        if (nErrno == 0)
            return oCall.Give(nCount, strData);
        if (nErrno == EAGAIN)
            nErrno = oCall.Fill(oDeadline);
    }
    return nErrno;
}

/// Waits for more bytes behind those held, or until the line was silent.
int WaitForSilence(CKorLineState& oState, CKorLineCall& oCall, unsigned int nSilence,
                   CKorLineDeadline& rDeadline, bool& rbSilent)
{
    const std::int64_t nSilent = oState.m_nArrival + nSilence * NS_PER_US;
    const int nErrno = oCall.FillUntil(std::min(nSilent, rDeadline.Moment()));
    if (nErrno != EAGAIN)
        return oState.IsHungUp() ? 0 : nErrno;
    const std::int64_t nNow = KorLineClock();
    rbSilent = nNow >= nSilent;
    const bool bMayGoOn = rDeadline.MayWait() && nNow < rDeadline.Moment();
    return rbSilent || bMayGoOn ? 0 : EAGAIN;
}

int TakeFrame(CKorLineState& oState, unsigned int nSilence, std::string& strData,
              unsigned int nTimeout, std::size_t nMax)
{
    CKorLineCall oCall(oState);
    CKorLineDeadline oDeadline(nTimeout);
    bool bSilent = false;
    int nErrno = oCall.CheckReading();
    while (nErrno == 0) {
        const std::size_t nHeld = oState.m_oHeld.Size();
        if (nHeld > nMax)
            return EMSGSIZE;
        if (nHeld != 0 && (bSilent || oState.IsHungUp()))
            return oCall.Give(nHeld, strData);
        nErrno = nHeld == 0 ? oCall.Fill(oDeadline)
                            : WaitForSilence(oState, oCall, nSilence, oDeadline, bSilent);
    }
    return nErrno;
}

/// Sends until all is sent, the time is over or it fails.
int Send(CKorLineState& oState, const char* pData, std::size_t nLength, unsigned int nTimeout)
{
    CKorLineCall oCall(oState);
    CKorLineDeadline oDeadline(nTimeout);
    oState.m_nWritten = 0;
    int nErrno = oCall.CheckLine();
    for (std::size_t nSent = 0; nErrno == 0 && nSent < nLength;) {
        std::size_t nPart = 0;
        nErrno = oCall.WriteBlock(pData + nSent, nLength - nSent, nPart);
        nSent += nPart;
        oState.m_nWritten = static_cast<unsigned int>(nSent);
        if (nSent == nLength || (nErrno != 0 && nErrno != EAGAIN))
            break;
        const std::int64_t nMoment = oDeadline.Moment();
        if (oCall.CheckCancel() != 0)
            nErrno = ECANCELED;
        else if (oDeadline.IsOver())
            nErrno = EAGAIN;
        else if (nErrno == EAGAIN && oDeadline.MayWait())
            nErrno = oCall.Wait(POLLOUT, nMoment);
    }
    return nErrno;
}

/// Lets time pass; a hang-up or a cancellation ends it.
int Pause(CKorLineState& oState, CKorLineCall& oCall, std::int64_t nMoment)
{
    const int nErrno = oCall.Wait(0, nMoment);
    if (nErrno == EAGAIN)
        return 0;
    if (nErrno == 0)
        oState.HangUp(EIO); // nothing else ends a wait for no event
    return nErrno == 0 ? EIO : nErrno;
}

} // namespace

int CKorSerialLine::Read(unsigned int nMax, std::string& strData, unsigned int nTimeout)
{
    CKorLineCall oCall(*m_pState);
    CKorLineDeadline oDeadline(nTimeout);
    const CKorLineBuffer& oHeld = m_pState->m_oHeld;
    int nErrno = oCall.CheckReading();
    if (nErrno == 0 && oHeld.Size() != 0 && oHeld.Size() < nMax)
        oCall.FillUntil(CKorLineDeadline::AT_ONCE);
    while (nErrno == 0 && oHeld.Size() == 0 && nMax != 0)
        nErrno = oCall.Fill(oDeadline);
    if (nErrno == 0)
        nErrno = oCall.Give(std::min<std::size_t>(oHeld.Size(), nMax), strData);
    return Result(nErrno);
}

int CKorSerialLine::ReadBytes(unsigned int nCount, std::string& strData, unsigned int nTimeout)
{
    return Result(Take(*m_pState, {nullptr, nCount}, strData, nTimeout));
}

int CKorSerialLine::ReadUntil(const std::string& strDelimiter, std::string& strData,
                              unsigned int nTimeout, unsigned int nMax)
{
    return Result(Take(*m_pState, {&strDelimiter, nMax}, strData, nTimeout));
}

int CKorSerialLine::ReadFrame(unsigned int nSilence, std::string& strData, unsigned int nTimeout,
                              unsigned int nMax)
{
    return Result(TakeFrame(*m_pState, nSilence, strData, nTimeout, nMax));
}

unsigned int CKorSerialLine::GetHeldCount() const
{
    const std::lock_guard<std::mutex> oLock(m_pState->m_oMutex);
    return static_cast<unsigned int>(m_pState->m_oHeld.Size());
}

int CKorSerialLine::DiscardInput()
{
    CKorLineCall oCall(*m_pState);
    int nErrno = oCall.CheckLine();
    if (nErrno == 0)
        nErrno = oCall.Run([](int hLine) { return tcflush(hLine, TCIFLUSH) == 0 ? 0 : errno; });
    m_pState->m_oHeld.Clear();
    return Result(nErrno);
}

int CKorSerialLine::Write(const char* pData, unsigned int nLength, unsigned int nTimeout)
{
    return Result(Send(*m_pState, pData, nLength, nTimeout));
}

int CKorSerialLine::WriteText(const std::string& strText, unsigned int nTimeout)
{
    return Result(Send(*m_pState, strText.data(), strText.size(), nTimeout));
}

unsigned int CKorSerialLine::GetWrittenCount() const
{
    const std::lock_guard<std::mutex> oLock(m_pState->m_oMutex);
    return m_pState->m_nWritten;
}

int CKorSerialLine::Drain(unsigned int nTimeout)
{
    CKorLineCall oCall(*m_pState);
    CKorLineDeadline oDeadline(nTimeout);
    int nErrno = oCall.CheckLine();
    while (nErrno == 0) {
        unsigned int nUnsent = 0;
        nErrno = oCall.Run([&](int hLine) { return KorCountUnsentBytes(hLine, nUnsent); });
        if (nErrno != 0 || nUnsent == 0)
            break;
        const std::int64_t nMoment = oDeadline.Moment();
        if (!oDeadline.MayWait() || oDeadline.IsOver())
            nErrno = EAGAIN;
        else
            nErrno = Pause(*m_pState, oCall, std::min(nMoment, KorLineClock() + NS_PER_MS));
    }
    return Result(nErrno);
}

int CKorSerialLine::SendBreak(unsigned int nMilliseconds)
{
    CKorLineCall oCall(*m_pState);
    CKorLineDeadline oDeadline(nMilliseconds);
    int nErrno = oCall.CheckLine();
    if (nErrno == 0)
        nErrno = oCall.Run([](int hLine) { return KorSetLineBreak(hLine, true); });
    if (nErrno != 0)
        return Result(nErrno);
    if (nMilliseconds != 0)
        nErrno = Pause(*m_pState, oCall, oDeadline.Moment());
    const int nEnd = oCall.Run([](int hLine) { return KorSetLineBreak(hLine, false); });
    return Result(nErrno != 0 ? nErrno : nEnd);
}
