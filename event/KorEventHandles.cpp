#include "event/KorEventHandlesDetail.h"

#include "event/KorEventLoop.h"
#include "event/KorEventTimersDetail.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace
{

unsigned int ToKernel(unsigned int nEvents)
{
    unsigned int nResult = EPOLLONESHOT;
    if (nEvents & CKorEventLoop::EVENT_READABLE)
        nResult |= EPOLLIN;
    if (nEvents & CKorEventLoop::EVENT_WRITABLE)
        nResult |= EPOLLOUT;
    if (nEvents & CKorEventLoop::EVENT_HANGUP)
        nResult |= EPOLLRDHUP;
    return nResult;
}

/// Waits longer than the 24 days that epoll_wait() can wait.
int WaitLong(int hPoll, epoll_event* pEvents, int nSize, std::int64_t nTimeout)
{
    pollfd oPoll = {hPoll, POLLIN, 0};
    timespec oTimeout;
    oTimeout.tv_sec = static_cast<time_t>(nTimeout / KOR_SECOND);
    oTimeout.tv_nsec = static_cast<long>(nTimeout % KOR_SECOND);
    if (ppoll(&oPoll, 1, &oTimeout, nullptr) == -1)
        return -1;
    return epoll_wait(hPoll, pEvents, nSize, 0);
}

} // namespace

CKorEventHandles::~CKorEventHandles()
{
    if (m_hPoll != -1)
        close(m_hPoll);
}

bool CKorEventHandles::Open(int hWake)
{
    if (m_hPoll != -1)
        close(m_hPoll);
    m_hPoll = epoll_create1(EPOLL_CLOEXEC);
    epoll_event oEvent = {};
    oEvent.events = EPOLLIN | EPOLLET;
    if (m_hPoll == -1 || epoll_ctl(m_hPoll, EPOLL_CTL_ADD, hWake, &oEvent) != 0)
        return false;
    for (size_t nHandle = 0; nHandle < m_vecHandles.size(); ++nHandle) {
        if (m_vecHandles[nHandle].m_nFirst != 0 && !m_vecHandles[nHandle].m_bAlwaysReady)
            Control(EPOLL_CTL_ADD, static_cast<int>(nHandle)); // one that is closed fails to arm
    }
    return true;
}

bool CKorEventHandles::IsWatched(int nHandle) const
{
    return nHandle >= 0 && static_cast<size_t>(nHandle) < m_vecHandles.size() &&
           At(nHandle).m_nFirst != 0;
}

int CKorEventHandles::Add(int nHandle, unsigned int nEvents, std::function<void()>&& fnHandler)
{
    if (fcntl(nHandle, F_GETFD) == -1)
        return -1;
    if (static_cast<size_t>(nHandle) >= m_vecHandles.size())
        m_vecHandles.resize(static_cast<size_t>(nHandle) + 1);
    MakeRoom(m_vecAlwaysReady);
    const int nTicket =
        m_oTickets.Add(SKorTicket::KIND_HANDLE, nHandle, nEvents, std::move(fnHandler));
    if (Link(nHandle, nTicket))
        return nTicket;
    const int nErrno = errno;
    Unlink(nTicket);
    m_oTickets.Remove(nTicket);
    errno = nErrno;
    return -1;
}

bool CKorEventHandles::Remove(int nTicket)
{
    const int nHandle = m_oTickets[nTicket].m_nKey;
    Unlink(nTicket);
    if (At(nHandle).m_nFirst != 0 || At(nHandle).m_bAlwaysReady)
        return Arm(nHandle);
    return epoll_ctl(m_hPoll, EPOLL_CTL_DEL, nHandle, nullptr) == 0;
}

bool CKorEventHandles::Arm(int nHandle)
{
    return At(nHandle).m_bAlwaysReady ? IsSameFile(nHandle) : Control(EPOLL_CTL_MOD, nHandle);
}

unsigned int CKorEventHandles::RegistrationOf(int nHandle) const
{
    return At(nHandle).m_nRegistration;
}

int CKorEventHandles::TakeFirst(int nHandle, unsigned int nRegistration)
{
    if (At(nHandle).m_nFirst == 0 || At(nHandle).m_nRegistration != nRegistration)
        return 0;
    const int nTicket = At(nHandle).m_nFirst;
    Unlink(nTicket);
    return nTicket;
}

int CKorEventHandles::Wait(epoll_event* pEvents, int nSize, std::int64_t nTimeout) const
{
    if (nTimeout == KOR_NEVER)
        return epoll_wait(m_hPoll, pEvents, nSize, -1);
    const std::int64_t nMilliseconds = (nTimeout + KOR_MILLISECOND - 1) / KOR_MILLISECOND;
    if (nMilliseconds > INT_MAX)
        return WaitLong(m_hPoll, pEvents, nSize, nTimeout);
    return epoll_wait(m_hPoll, pEvents, nSize, static_cast<int>(nMilliseconds));
}

int CKorEventHandles::HandleOf(const epoll_event& oEvent) const
{
    const int nHandle = static_cast<int>(oEvent.data.u64 & 0xFFFFFFFF);
    const bool bPresent =
        IsWatched(nHandle) && At(nHandle).m_nRegistration == oEvent.data.u64 >> 32;
    return bPresent ? nHandle : -1;
}

bool CKorEventHandles::IsReady() const
{
    constexpr unsigned int READY = CKorEventLoop::EVENT_READABLE | CKorEventLoop::EVENT_WRITABLE;
    for (const int nHandle : m_vecAlwaysReady) {
        if ((EventsOf(nHandle) & READY) != 0)
            return true;
    }
    return false;
}

int CKorEventHandles::NextOf(int nHandle, unsigned int nRound)
{
    int nTicket = At(nHandle).m_nFirst;
    while (nTicket != 0 && m_oTickets[nTicket].m_nRound == nRound)
        nTicket = m_oTickets[nTicket].m_nNext;
    if (nTicket != 0)
        m_oTickets[nTicket].m_nRound = nRound;
    return nTicket;
}

// The bits of poll() are those of epoll.
unsigned int CKorEventHandles::Poll(int nHandle) const
{
    pollfd oPoll = {nHandle, POLLIN | POLLOUT | POLLRDHUP, 0};
    return poll(&oPoll, 1, 0) == 1 ? static_cast<unsigned int>(oPoll.revents) : 0;
}

unsigned int CKorEventHandles::EventsFor(int nTicket, unsigned int nReady) const
{
    unsigned int nEvents = 0;
    if (nReady & EPOLLIN)
        nEvents |= CKorEventLoop::EVENT_READABLE;
    if (nReady & EPOLLOUT)
        nEvents |= CKorEventLoop::EVENT_WRITABLE;
    if (nReady & EPOLLRDHUP)
        nEvents |= CKorEventLoop::EVENT_HANGUP;
    nEvents &= m_oTickets[nTicket].m_nValue;
    if (nReady & (EPOLLHUP | EPOLLERR))
        nEvents |= CKorEventLoop::EVENT_HANGUP;
    return nEvents;
}

bool CKorEventHandles::Link(int nHandle, int nTicket)
{
    int* pnLink = &At(nHandle).m_nFirst;
    const bool bFirst = *pnLink == 0;
    while (*pnLink != 0)
        pnLink = &m_oTickets[*pnLink].m_nNext;
    *pnLink = nTicket;
    return bFirst ? Register(nHandle) : Arm(nHandle);
}

void CKorEventHandles::Unlink(int nTicket)
{
    const int nHandle = m_oTickets[nTicket].m_nKey;
    int* pnLink = &At(nHandle).m_nFirst;
    while (*pnLink != nTicket)
        pnLink = &m_oTickets[*pnLink].m_nNext;
    *pnLink = m_oTickets[nTicket].m_nNext;
    if (At(nHandle).m_nFirst != 0 || !At(nHandle).m_bAlwaysReady)
        return;
    auto it = m_vecAlwaysReady.begin();
    while (*it != nHandle)
        ++it;
    m_vecAlwaysReady.erase(it);
}

// The open file may be known already: under this number, for a ticket that was dropped when the
// number was closed, if another handle kept the file open and the number refers to it again.
bool CKorEventHandles::Register(int nHandle)
{
    if (++m_nRegistration == 0)
        ++m_nRegistration; // 0 marks the wake-up
    At(nHandle).m_nRegistration = m_nRegistration;
    At(nHandle).m_bAlwaysReady = false;
    if (Control(EPOLL_CTL_ADD, nHandle))
        return true;
    if (errno == EEXIST)
        return Control(EPOLL_CTL_MOD, nHandle);
    return errno == EPERM && RegisterAlwaysReady(nHandle);
}

bool CKorEventHandles::RegisterAlwaysReady(int nHandle)
{
    struct stat oStatus;
    if (fstat(nHandle, &oStatus) != 0)
        return false;
    SHandle& oHandle = At(nHandle);
    oHandle.m_bAlwaysReady = true;
    oHandle.m_nDevice = oStatus.st_dev;
    oHandle.m_nFile = oStatus.st_ino;
    m_vecAlwaysReady.push_back(nHandle);
    return true;
}

bool CKorEventHandles::IsSameFile(int nHandle) const
{
    struct stat oStatus;
    return fstat(nHandle, &oStatus) == 0 && oStatus.st_dev == At(nHandle).m_nDevice &&
           oStatus.st_ino == At(nHandle).m_nFile;
}

bool CKorEventHandles::Control(int nOperation, int nHandle) const
{
    epoll_event oEvent = {};
    oEvent.events = ToKernel(EventsOf(nHandle));
    oEvent.data.u64 =
        std::uint64_t{At(nHandle).m_nRegistration} << 32 | static_cast<unsigned int>(nHandle);
    return epoll_ctl(m_hPoll, nOperation, nHandle, &oEvent) == 0;
}

unsigned int CKorEventHandles::EventsOf(int nHandle) const
{
    unsigned int nEvents = 0;
    for (int nTicket = At(nHandle).m_nFirst; nTicket != 0; nTicket = m_oTickets[nTicket].m_nNext)
        nEvents |= m_oTickets[nTicket].m_nValue;
    return nEvents;
}
