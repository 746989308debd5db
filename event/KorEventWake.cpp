#include "event/KorEventWakeDetail.h"

#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

CKorEventWake::~CKorEventWake()
{
    Close();
}

bool CKorEventWake::Open()
{
    Close();
    m_bWaiting = false;
    m_nProcess = getpid();
    m_hWake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return m_hWake != -1;
}

void CKorEventWake::Close()
{
    if (m_hWake != -1)
        close(m_hWake);
    m_hWake = -1;
}

bool CKorEventWake::IsOwn() const
{
    return m_hWake != -1 && m_nProcess == getpid();
}

// In a forked process the handle is still the one of the process before.
void CKorEventWake::Wake()
{
    if (!m_bWaiting || m_nProcess != getpid() || !m_bWaiting.exchange(false))
        return;
    const int nErrno = errno;
    const std::uint64_t nOne = 1;
    const ssize_t nWritten = write(m_hWake, &nOne, sizeof nOne);
    static_cast<void>(
        nWritten); // fails only when 2^64 - 2 wake-ups are unread: it is readable then
    errno = nErrno;
}
