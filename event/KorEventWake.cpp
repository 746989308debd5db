#include "event/KorEventWakeDetail.h"

#include <cerrno>
#include <cstdint>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace
{

std::atomic<unsigned int> s_nForks{0};

// Tells a forked process more cheaply than getpid() would at each turn of a loop.
const int s_nRegistered = pthread_atfork(nullptr, nullptr, [] { ++s_nForks; });

} // namespace

CKorEventWake::~CKorEventWake()
{
    Close();
}

bool CKorEventWake::Open()
{
    Close();
    m_bWaiting = false;
    m_nProcess = getpid();
    m_nForks = s_nForks;
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
    return m_hWake != -1 && m_nForks == s_nForks;
}

// In a forked process the handle is still the one of the process before; a child of vfork() uses
// this process's memory.
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
