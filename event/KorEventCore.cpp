#include "event/KorEventCoreDetail.h"

#include <algorithm>
#include <cerrno>

/// One thread's right to run the loop.
class CKorEventCore::CClaim
{
public:
    explicit CClaim(std::atomic<bool>& bRunning)
        : m_bRunning(bRunning), m_bGranted(!bRunning.exchange(true))
    {
        if (!m_bGranted)
            errno = EBUSY;
    }
    ~CClaim()
    {
        if (m_bGranted)
            m_bRunning = false;
    }
    CClaim(const CClaim&) = delete;
    CClaim& operator=(const CClaim&) = delete;

    bool IsGranted() const { return m_bGranted; }

private:
    std::atomic<bool>& m_bRunning;
    const bool m_bGranted;
};

/// The events of one round. Those that are not taken, because of a Stop() or an exception, are
/// given back to the kernel, which reports them again if they still hold.
class CKorEventCore::CReady
{
public:
    explicit CReady(CKorEventCore& oCore) : m_oCore(oCore) {}
    ~CReady()
    {
        while (m_nNext < m_nCount && m_oCore.Own()) {
            const int nHandle = TakeHandle();
            if (nHandle != -1)
                m_oCore.m_oHandles.Arm(nHandle);
        }
    }
    CReady(const CReady&) = delete;
    CReady& operator=(const CReady&) = delete;

    bool Wait(std::int64_t nTimeout)
    {
        m_nCount = m_oCore.m_oHandles.Wait(m_aoEvents, MAX_READY, nTimeout);
        return m_nCount != -1 || errno == EINTR;
    }
    bool IsEmpty() const { return m_nNext >= m_nCount; }
    unsigned int GetEvents() const { return m_aoEvents[m_nNext].events; }
    /// The next handle; -1 for one that is not watched any more.
    int TakeHandle() { return m_oCore.m_oHandles.HandleOf(m_aoEvents[m_nNext++]); }

private:
    CKorEventCore& m_oCore;
    int m_nCount = 0;
    int m_nNext = 0;
    epoll_event m_aoEvents[MAX_READY];
};

/// A handler that runs. It lies outside the table meanwhile, where nothing moves or destroys it,
/// and goes back unless its ticket was cancelled.
class CKorEventCore::CCall
{
public:
    CCall(CKorTicketTable& oTickets, int nTicket)
        : m_oTickets(oTickets),
          m_nTicket(nTicket),
          m_fnHandler(std::move(oTickets[nTicket].m_fnHandler))
    {
    }
    ~CCall()
    {
        SKorTicket* pTicket = m_oTickets.Find(m_nTicket);
        if (pTicket != nullptr)
            pTicket->m_fnHandler = std::move(m_fnHandler);
    }
    CCall(const CCall&) = delete;
    CCall& operator=(const CCall&) = delete;

    void Run() const { m_fnHandler(); }

private:
    CKorTicketTable& m_oTickets;
    const int m_nTicket;
    std::function<void()> m_fnHandler;
};

CKorEventCore::CKorEventCore()
    : m_oTimers(m_oTickets), m_oHandles(m_oTickets), m_oSignals(m_oTickets, m_oWake)
{
    Own();
}

int CKorEventCore::WatchHandle(int nHandle, unsigned int nEvents,
                               std::function<void(unsigned int)> fnHandler)
{
    if (!Own())
        return -1;
    if (m_oHandles.IsWatched(nHandle) && !m_oHandles.Arm(nHandle))
        DropHandle(nHandle);
    const int nTicket = m_oHandles.Add(nHandle, nEvents,
                                       [this, fnTold = std::move(fnHandler)] { fnTold(m_nTold); });
    if (nTicket != -1)
        m_oTickets[nTicket].m_nRound = m_nRound;
    return nTicket;
}

bool CKorEventCore::SetEvents(int nTicket, unsigned int nEvents)
{
    SKorTicket* pTicket = m_oTickets.Find(nTicket);
    if (pTicket == nullptr || pTicket->m_eKind != SKorTicket::KIND_HANDLE) {
        errno = EINVAL;
        return false;
    }
    if (!Own())
        return false;
    const int nHandle = pTicket->m_nKey;
    pTicket->m_nValue = nEvents;
    if (m_oHandles.Arm(nHandle))
        return true;
    DropHandle(nHandle);
    errno = EBADF;
    return false;
}

int CKorEventCore::AddTimer(unsigned int nMilliseconds, unsigned int nPeriod,
                            std::function<void()> fnHandler)
{
    m_oTimers.Reserve();
    const int nTicket = m_oTickets.Add(SKorTicket::KIND_TIMER, 0, nPeriod, std::move(fnHandler));
    m_oTimers.Add(nTicket, KorEventDeadline(nMilliseconds));
    return nTicket;
}

int CKorEventCore::CallOnSignal(int nSignal, std::function<void()> fnHandler)
{
    return Own() ? m_oSignals.Add(nSignal, std::move(fnHandler)) : -1;
}

bool CKorEventCore::Cancel(int nTicket)
{
    const SKorTicket* pTicket = m_oTickets.Find(nTicket);
    if (pTicket == nullptr)
        return false;
    Own();
    if (pTicket->m_eKind == SKorTicket::KIND_HANDLE)
        return CancelHandle(nTicket);
    if (pTicket->m_eKind == SKorTicket::KIND_TIMER)
        m_oTimers.Remove(nTicket);
    else
        m_oSignals.Remove(nTicket);
    m_oTickets.Remove(nTicket);
    return true;
}

bool CKorEventCore::IsActive(int nTicket)
{
    const SKorTicket* pTicket = m_oTickets.Find(nTicket);
    if (pTicket == nullptr)
        return false;
    return pTicket->m_eKind != SKorTicket::KIND_HANDLE ||
           (Own() && m_oHandles.Arm(pTicket->m_nKey));
}

void CKorEventCore::Post(std::function<void()> fnHandler)
{
    m_oPosts.Add(std::move(fnHandler));
    m_oWake.Wake();
}

void CKorEventCore::Close()
{
    size_t nPlace = 0;
    while (const int nTicket = m_oTickets.FirstFrom(nPlace))
        Cancel(nTicket);
    for (m_oPosts.Take(); m_oPosts.Next() != nullptr; m_oPosts.Take()) {
    }
}

int CKorEventCore::Run()
{
    const CClaim oClaim(m_bRunning);
    if (!oClaim.IsGranted())
        return -1;
    while (!m_bStop) {
        if (!Turn(KOR_NEVER))
            return -1;
    }
    m_bStop = false; // before the result: a Stop() in between ends the next run too
    return m_nResult;
}

bool CKorEventCore::RunOnce(unsigned int nTimeout)
{
    const CClaim oClaim(m_bRunning);
    if (!oClaim.IsGranted())
        return false;
    const std::int64_t nDeadline = KorEventDeadline(nTimeout);
    while (Turn(nDeadline) && !m_bRan && !m_bStop && KorEventNow() < nDeadline) {
    }
    return m_bRan;
}

void CKorEventCore::Stop(int nResult)
{
    m_nResult = nResult;
    m_bStop = true;
    m_oWake.Wake();
}

bool CKorEventCore::Own()
{
    if (m_oWake.IsOwn())
        return true;
    if (!m_oWake.Open())
        return false;
    if (!m_oHandles.Open(m_oWake.GetHandle())) {
        m_oWake.Close();
        return false;
    }
    m_oSignals.Adopt();
    return true;
}

bool CKorEventCore::Turn(std::int64_t nDeadline)
{
    ++m_nRound;
    m_bRan = false;
    if (!Own())
        return false;
    CReady oReady(*this);
    if (!Wait(oReady, nDeadline))
        return false;
    RunSignals();
    RunPosts();
    RunTimers();
    RunHandles(oReady);
    return true;
}

// Whoever brings something after the announcement wakes the loop up; what came before is seen.
bool CKorEventCore::Wait(CReady& oReady, std::int64_t nDeadline)
{
    std::int64_t nTimeout = TimeToWait(nDeadline);
    if (nTimeout == 0)
        return oReady.Wait(0);
    m_oWake.BeginWait();
    if (IsDue())
        nTimeout = 0;
    const bool bDone = oReady.Wait(nTimeout);
    m_oWake.EndWait();
    m_nNow = 0;
    return bDone;
}

bool CKorEventCore::IsDue()
{
    return m_bStop || m_oPosts.IsDue() || m_oSignals.IsDue() || m_oHandles.IsReady();
}

std::int64_t CKorEventCore::TimeToWait(std::int64_t nDeadline)
{
    m_nNow = 0;
    if (IsDue())
        return 0;
    const std::int64_t nEnd = std::min(nDeadline, m_oTimers.FirstDue());
    if (nEnd == KOR_NEVER)
        return KOR_NEVER;
    m_nNow = KorEventNow();
    return std::max<std::int64_t>(nEnd - m_nNow, 0);
}

void CKorEventCore::RunSignals()
{
    m_oSignals.MarkDue();
    while (!m_bStop) {
        const int nTicket = m_oSignals.TakeDue();
        if (nTicket == 0)
            return;
        Call(nTicket);
    }
}

void CKorEventCore::RunPosts()
{
    m_oPosts.Take();
    while (!m_bStop) {
        const std::function<void()> fnHandler = m_oPosts.Next();
        if (!fnHandler)
            return;
        m_bRan = true;
        fnHandler();
    }
}

void CKorEventCore::RunTimers()
{
    if (m_oTimers.FirstDue() == KOR_NEVER)
        return;
    const std::int64_t nNow = m_nNow != 0 ? m_nNow : KorEventNow();
    while (!m_bStop && m_oTimers.FirstDue() <= nNow)
        RunTimer(m_oTimers.First());
}

void CKorEventCore::RunTimer(int nTicket)
{
    if (m_oTickets[nTicket].m_nValue != 0)
        return RunPeriod(nTicket);
    m_oTimers.Remove(nTicket);
    const std::function<void()> fnHandler = m_oTickets.Remove(nTicket);
    m_bRan = true;
    fnHandler();
}

// Turns that pass while the handler runs are missed ones too.
void CKorEventCore::RunPeriod(int nTicket)
{
    m_oTimers.Advance(nTicket, KorEventNow());
    Call(nTicket);
    if (m_oTickets.Find(nTicket) != nullptr)
        m_oTimers.Advance(nTicket, KorEventNow());
}

void CKorEventCore::RunHandles(CReady& oReady)
{
    while (!m_bStop && !oReady.IsEmpty()) {
        const unsigned int nEvents = oReady.GetEvents();
        RunHandle(oReady.TakeHandle(), nEvents);
    }
    const std::vector<int>& vecAlways = m_oHandles.GetAlwaysReady();
    for (size_t nIndex = 0; !m_bStop && nIndex < vecAlways.size(); ++nIndex)
        RunHandle(vecAlways[nIndex], EPOLLIN | EPOLLOUT);
}

// What the kernel said of the handle is out of date as soon as any handler ran.
void CKorEventCore::RunHandle(int nHandle, unsigned int nReady)
{
    while (!m_bStop && m_oHandles.IsWatched(nHandle) && Own()) {
        const int nTicket = m_oHandles.NextOf(nHandle, m_nRound);
        if (nTicket == 0)
            return;
        if (!m_oHandles.Arm(nHandle))
            return DropHandle(nHandle);
        m_nTold = m_oHandles.EventsFor(nTicket, m_bRan ? m_oHandles.Poll(nHandle) : nReady);
        if (m_nTold != 0)
            Call(nTicket);
    }
}

void CKorEventCore::Call(int nTicket)
{
    m_bRan = true;
    CCall(m_oTickets, nTicket).Run();
}

void CKorEventCore::DropHandle(int nHandle)
{
    const unsigned int nRegistration = m_oHandles.RegistrationOf(nHandle);
    while (const int nTicket = m_oHandles.TakeFirst(nHandle, nRegistration))
        m_oTickets.Remove(nTicket);
}

bool CKorEventCore::CancelHandle(int nTicket)
{
    const int nHandle = m_oTickets[nTicket].m_nKey;
    const bool bOpen = m_oHandles.Remove(nTicket);
    const std::function<void()> fnHandler = m_oTickets.Remove(nTicket);
    if (!bOpen)
        DropHandle(nHandle);
    return bOpen;
}
