#include "event/KorEventCoreDetail.h"

#include <algorithm>
#include <cerrno>

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
