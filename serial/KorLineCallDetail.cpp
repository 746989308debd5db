#include "serial/KorLineCallDetail.h"

#include <poll.h>

CKorLineCall::COutside::COutside(CKorLineCall& oCall)
    : m_oCall(oCall), m_hLine(oCall.m_oState.m_hLine)
{
    m_oCall.m_oState.BeginUse();
    m_oCall.m_oLock.unlock();
}

CKorLineCall::COutside::~COutside()
{
    m_oCall.m_oLock.lock();
    m_oCall.m_oState.EndUse();
}

int CKorLineCall::CheckLine() const
{
    if (m_oState.m_hLine == CKorLineDevice::NO_HANDLE || m_oState.m_bClosing)
        return EBADF;
    return m_oState.m_nHangupErrno;
}

int CKorLineCall::CheckReading() const
{
    if (m_oState.m_hLine == CKorLineDevice::NO_HANDLE || m_oState.m_bClosing)
        return EBADF;
    return m_oState.m_pReception != nullptr ? EOPNOTSUPP : 0;
}

int CKorLineCall::CheckCancel() const
{
    return m_oState.m_nCancels != m_nCancels ? ECANCELED : 0;
}

int CKorLineCall::Wait(short nEvents, std::int64_t nMoment)
{
    // The wake stays raised until all calls that were cancelled noticed, which they do at once.
    m_oState.BeginUse();
    while (m_oState.m_nCancelled != 0 && CheckCancel() == 0)
        m_oState.m_oChanged.wait(m_oLock);
    m_oState.EndUse();
    if (CheckCancel() != 0)
        return ECANCELED;

    ++m_oState.m_nWaiting;
    int nErrno = 0;
    {
        const COutside oOutside(*this);
        nErrno = KorWaitForLine(oOutside.m_hLine, nEvents, m_oState.m_oWake.Handle(), nMoment);
    }
    if (CheckCancel() == 0) {
        --m_oState.m_nWaiting;
        return nErrno;
    }
    m_oState.NoticeCancel();
    return ECANCELED;
}

int CKorLineCall::WaitForInput(const CKorLineWake& oWake)
{
    const COutside oOutside(*this);
    return KorWaitForLine(oOutside.m_hLine, POLLIN, oWake.Handle(), CKorLineDeadline::NEVER);
}

int CKorLineCall::FillUntil(std::int64_t nMoment)
{
    int nErrno = CheckCancel();
    if (nErrno == 0)
        nErrno = CheckReading();
    if (nErrno == 0)
        nErrno = m_oState.m_nHangupErrno;
    if (nErrno != 0)
        return nErrno;
    if (nMoment == CKorLineDeadline::AT_ONCE)
        return ReadBlock();
    return ReadOrWait(nMoment);
}

/// Bytes that stream are read without a look first; where that found none, the next reads look.
int CKorLineCall::ReadOrWait(std::int64_t nMoment)
{
    constexpr unsigned int LOOKS = 8;
    if (m_oState.m_nLooks == 0) {
        const int nErrno = ReadBlock();
        if (nErrno != EAGAIN)
            return nErrno;
        m_oState.m_nLooks = LOOKS;
    }
    --m_oState.m_nLooks;
    const int nErrno = Wait(POLLIN, nMoment);
    return nErrno == 0 ? ReadBlock() : nErrno;
}

int CKorLineCall::Fill(CKorLineDeadline& rDeadline)
{
    if (rDeadline.IsOver())
        return EAGAIN;
    int nErrno = 0;
    do {
        nErrno = FillUntil(rDeadline.Moment());
    } while (nErrno == EAGAIN && rDeadline.MayWait() && !rDeadline.IsOver());
    return nErrno;
}

int CKorLineCall::ReadBlock()
{
    m_oState.m_oHeld.MakeRoom(CKorLineState::BLOCK);
    const COutside oOutside(*this);
    const std::lock_guard<std::mutex> oTraffic(m_oState.m_oTrafficMutex);
    return m_oState.ReadBlock(oOutside.m_hLine);
}

int CKorLineCall::WriteBlock(const char* pData, std::size_t nLength, std::size_t& rnWritten)
{
    const COutside oOutside(*this);
    const std::lock_guard<std::mutex> oTraffic(m_oState.m_oTrafficMutex);
    return m_oState.WriteBlock(oOutside.m_hLine, pData, nLength, rnWritten);
}

int CKorLineCall::Run(const CKorLineJob& oJob)
{
    int nErrno = 0;
    {
        const COutside oOutside(*this);
        nErrno = oJob.Run(oOutside.m_hLine);
    }
    if (nErrno == EIO)
        m_oState.HangUp(nErrno);
    return nErrno;
}

int CKorLineCall::Give(std::size_t nCount, std::string& strData)
{
    strData.assign(m_oState.m_oHeld.Data(), nCount);
    m_oState.m_oHeld.Drop(nCount);
    return 0;
}
