#include "serial/KorLineStateDetail.h"

#include "serial/KorLineReceptionDetail.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace
{

bool HasHungUp(int hLine)
{
    pollfd oLine = {hLine, 0, 0};
    return poll(&oLine, 1, 0) == 1;
}

bool IsLoss(int nErrno)
{
    return nErrno == EIO || nErrno == ENXIO || nErrno == ENODEV;
}

} // namespace

int CKorLineState::Open(const char* pszDevice, const SKorLineOptions& oOptions)
{
    int nErrno = m_oWake.Open();
    if (nErrno == 0)
        nErrno = m_oDevice.Open(pszDevice, oOptions);
    if (nErrno != 0) {
        m_oWake.Close();
        return nErrno;
    }
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    m_hLine = m_oDevice.Handle();
    m_nHangupErrno = 0;
    m_nWritten = 0;
    return 0;
}

void CKorLineState::Close()
{
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        if (m_hLine == CKorLineDevice::NO_HANDLE)
            return;
        m_bClosing = true;
        KorEndLineReception(*this);
        Cancel();
        m_oChanged.notify_all();
        m_oChanged.wait(oLock, [this]() { return m_nUses == 0; });
        m_hLine = CKorLineDevice::NO_HANDLE;
        m_bClosing = false;
        m_oHeld.Clear();
    }
    m_oDevice.Close();
    m_oWake.Close();
}

void CKorLineState::Cancel()
{
    ++m_nCancels;
    if (m_nWaiting == 0)
        return;
    m_nCancelled += m_nWaiting;
    m_nWaiting = 0;
    m_oWake.Raise();
}

void CKorLineState::NoticeCancel()
{
    if (--m_nCancelled != 0)
        return;
    if (!m_bClosing)
        m_oWake.Clear();
    m_oChanged.notify_all();
}

int CKorLineState::ReadBlock(int hLine)
{
    ssize_t nRead = 0;
    do {
        nRead = read(hLine, m_acBlock, sizeof m_acBlock);
    } while (nRead == -1 && errno == EINTR);
    int nErrno = nRead == -1 ? errno : 0;
    if (nRead == 0) // no bytes and no error: a hang-up, or somebody else changed the settings
        nErrno = HasHungUp(hLine) ? EIO : EAGAIN;

    const std::size_t nCount = nErrno == 0 ? static_cast<std::size_t>(nRead) : 0;
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        if (nErrno != 0 && nErrno != EAGAIN)
            HangUp(nErrno);
        m_oHeld.Append(m_acBlock, nCount);
        if (nCount != 0)
            m_nArrival = KorLineClock();
    }
    if (nCount != 0 && m_fnTrace)
        m_fnTrace(false, m_acBlock, static_cast<unsigned int>(nCount));
    return nErrno;
}

int CKorLineState::WriteBlock(int hLine, const char* pData, std::size_t nLength,
                              std::size_t& rnWritten)
{
    ssize_t nWritten = 0;
    do {
        nWritten = write(hLine, pData, nLength);
    } while (nWritten == -1 && errno == EINTR);
    const int nErrno = nWritten == -1 ? errno : 0;
    if (IsLoss(nErrno)) {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        HangUp(nErrno);
    }
    if (nErrno != 0 || nWritten == 0)
        return nErrno != 0 ? nErrno : EAGAIN;
    rnWritten = static_cast<std::size_t>(nWritten);
    if (m_fnTrace)
        m_fnTrace(true, pData, static_cast<unsigned int>(nWritten));
    return 0;
}

void CKorLineState::EndUse()
{
    if (--m_nUses == 0 && m_bClosing)
        m_oChanged.notify_all();
}

void CKorLineState::HangUp(int nErrno)
{
    if (m_nHangupErrno == 0)
        m_nHangupErrno = nErrno;
}
