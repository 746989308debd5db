#include "event/KorEventCoreDetail.h"

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

CKorEventCore::CKorEventCore()
    : m_oTimers(m_oTickets), m_oHandles(m_oTickets), m_oSignals(m_oTickets, m_oWake)
{
    Own();
}

int CKorEventCore::WatchHandle(int nHandle, unsigned int nEvents,
                               std::function<void(unsigned int)>&& fnHandler)
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
                            std::function<void()>&& fnHandler)
{
    m_oTimers.Reserve();
    const int nTicket = m_oTickets.Add(SKorTicket::KIND_TIMER, 0, nPeriod, std::move(fnHandler));
    m_oTimers.Add(nTicket, KorEventDeadline(nMilliseconds));
    return nTicket;
}

int CKorEventCore::CallOnSignal(int nSignal, std::function<void()>&& fnHandler)
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

void CKorEventCore::Post(std::function<void()>&& fnHandler)
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
