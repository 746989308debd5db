#include "serial/KorSerialLine.h"

#include "serial/KorLineCallDetail.h"
#include "serial/KorLineDriverDetail.h"
#include "serial/KorLineReceptionDetail.h"
#include "text/KorSharedDetail.h"

#include <termios.h>
#include <utility>

namespace
{

/// Runs a function of the descriptor of a line that is open and not lost.
int RunOnLine(CKorLineState& oState, const CKorLineJob& oJob)
{
    CKorLineCall oCall(oState);
    const int nErrno = oCall.CheckLine();
    return nErrno == 0 ? oCall.Run(oJob) : nErrno;
}

/// The same for one that changes the device.
int ChangeDevice(CKorLineState& oState, const CKorLineJob& oJob)
{
    const std::lock_guard<std::mutex> oLife(oState.m_oLifeMutex);
    return RunOnLine(oState, oJob);
}

int Flush(int hLine, int nQueue)
{
    return tcflush(hLine, nQueue) == 0 ? 0 : errno;
}

} // namespace

CKorSerialLine::CKorSerialLine() : m_pState(KorMakeShared<CKorLineState>()) {}

CKorSerialLine::~CKorSerialLine()
{
    Close();
}

int CKorSerialLine::Result(int nErrno) const
{
    if (nErrno == 0)
        return CKorSerial::SERIAL_OK;
    m_pState->m_oErrors.Set(nErrno);
    errno = nErrno;
    if (nErrno == EAGAIN)
        return CKorSerial::SERIAL_WOULDBLOCK;
    return nErrno == EOPNOTSUPP ? CKorSerial::SERIAL_NOT_SUPPORTED : CKorSerial::SERIAL_IO_ERROR;
}

int CKorSerialLine::Open(const char* pszDevice, const SKorLineOptions& oOptions)
{
    Close();
    int nErrno = 0;
    {
        const std::lock_guard<std::mutex> oLife(m_pState->m_oLifeMutex);
        m_pState->Close(); // somebody may have opened it since
        nErrno = m_pState->Open(pszDevice, oOptions);
    }
    const int nResult = Result(nErrno);
    const bool bToldApart = nErrno == 0 || nErrno == EOPNOTSUPP;
    return bToldApart ? nResult : CKorSerial::SERIAL_OPEN_ERROR;
}

int CKorSerialLine::SetOptions(const SKorLineOptions& oOptions)
{
    return Result(
        ChangeDevice(*m_pState, [&](int) { return m_pState->m_oDevice.SetOptions(oOptions); }));
}

void CKorSerialLine::Close()
{
    const int nErrno = errno;
    {
        const std::lock_guard<std::mutex> oLife(m_pState->m_oLifeMutex);
        m_pState->Close();
    }
    KorJoinLineReceptions(*m_pState);
    errno = nErrno;
}

void CKorSerialLine::Cancel()
{
    const std::lock_guard<std::mutex> oLock(m_pState->m_oMutex);
    m_pState->Cancel();
}

bool CKorSerialLine::IsHungUp() const
{
    const std::lock_guard<std::mutex> oLock(m_pState->m_oMutex);
    return m_pState->m_nHangupErrno != 0;
}

int CKorSerialLine::GetLastError() const
{
    return m_pState->m_oErrors.Get();
}

int CKorSerialLine::GetHandle() const
{
    const std::lock_guard<std::mutex> oLock(m_pState->m_oMutex);
    return m_pState->m_bClosing ? CKorLineDevice::NO_HANDLE : m_pState->m_hLine;
}

int CKorSerialLine::StartReception(DataHandler fnData, HangupHandler fnHangup)
{
    const bool bCanReceive = static_cast<bool>(fnData);
    auto pReception = KorMakeShared<CKorLineReception>(std::move(fnData), std::move(fnHangup));
    CKorLineCall oCall(*m_pState);
    int nErrno = oCall.CheckReading();
    if (nErrno == EOPNOTSUPP) {
        Result(EALREADY);
        return CKorSerial::SERIAL_THREAD_RUNNING;
    }
    if (nErrno == 0 && !bCanReceive)
        nErrno = EINVAL;
    if (nErrno == 0 && m_pState->m_oHeld.Size() == 0)
        nErrno = m_pState->m_nHangupErrno;
    return Result(nErrno == 0 ? KorStartLineReception(m_pState, std::move(pReception)) : nErrno);
}

void CKorSerialLine::StopReception()
{
    {
        const std::lock_guard<std::mutex> oLock(m_pState->m_oMutex);
        KorEndLineReception(*m_pState);
    }
    KorJoinLineReceptions(*m_pState);
}

int CKorSerialLine::DiscardOutput()
{
    return Result(RunOnLine(*m_pState, [](int hLine) { return Flush(hLine, TCOFLUSH); }));
}

int CKorSerialLine::SetModemLines(CKorSerial::E_RTS_STATE eRts, CKorSerial::E_DTR_STATE eDtr)
{
    return Result(RunOnLine(*m_pState, [=](int hLine) {
        return KorSetModemLines(hLine, eRts != CKorSerial::RTS_OFF, eDtr != CKorSerial::DTR_OFF);
    }));
}

int CKorSerialLine::GetModemLines(SKorModemLines& rLines)
{
    return Result(
        RunOnLine(*m_pState, [&rLines](int hLine) { return KorGetModemLines(hLine, rLines); }));
}

int CKorSerialLine::SetRS485(const SKorRS485& oRS485)
{
    return Result(
        ChangeDevice(*m_pState, [&](int) { return m_pState->m_oDevice.SetRS485(oRS485); }));
}

int CKorSerialLine::SetLowLatency(bool bLowLatency)
{
    return Result(ChangeDevice(
        *m_pState, [&](int) { return m_pState->m_oDevice.SetLowLatency(bLowLatency); }));
}

int CKorSerialLine::GetErrorCounts(SKorLineCounts& rCounts)
{
    return Result(
        RunOnLine(*m_pState, [&rCounts](int hLine) { return KorGetLineCounts(hLine, rCounts); }));
}

void CKorSerialLine::SetTrace(TraceHandler fnTrace)
{
    const std::lock_guard<std::mutex> oTraffic(m_pState->m_oTrafficMutex);
    m_pState->m_fnTrace.swap(fnTrace);
}
