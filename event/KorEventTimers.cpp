#include "event/KorEventTimersDetail.h"

#include <algorithm>
#include <ctime>

namespace
{

// Four make the heap half as high as two, and each step up or down touches a ticket.
constexpr size_t CHILDREN = 4;

} // namespace

std::int64_t KorEventNow()
{
    timespec oNow;
    clock_gettime(CLOCK_MONOTONIC, &oNow);
    return static_cast<std::int64_t>(oNow.tv_sec) * KOR_SECOND + oNow.tv_nsec;
}

std::int64_t KorEventDeadline(unsigned int nMilliseconds)
{
    if (nMilliseconds == 0xFFFFFFFF)
        return KOR_NEVER;
    return KorEventNow() + nMilliseconds * KOR_MILLISECOND;
}

void CKorTimerQueue::Add(int nTicket, std::int64_t nDue)
{
    m_vecHeap.push_back({nDue, m_nOrder++, nTicket});
    Rise(m_vecHeap.size() - 1);
}

void CKorTimerQueue::Remove(int nTicket)
{
    const size_t nPlace = PlaceOf(nTicket);
    const STimer oLast = m_vecHeap.back();
    m_vecHeap.pop_back();
    if (nPlace == m_vecHeap.size())
        return;
    Put(nPlace, oLast);
    Rise(nPlace);
    Sink(PlaceOf(oLast.m_nTicket));
}

void CKorTimerQueue::Advance(int nTicket, std::int64_t nNow)
{
    const size_t nPlace = PlaceOf(nTicket);
    STimer& oTimer = m_vecHeap[nPlace];
    if (oTimer.m_nDue > nNow)
        return;
    const std::int64_t nPeriod = m_oTickets[nTicket].m_nValue * KOR_MILLISECOND;
    oTimer.m_nDue += ((nNow - oTimer.m_nDue) / nPeriod + 1) * nPeriod;
    oTimer.m_nOrder = m_nOrder++;
    Sink(nPlace);
}

bool CKorTimerQueue::IsBefore(const STimer& oLeft, const STimer& oRight)
{
    if (oLeft.m_nDue != oRight.m_nDue)
        return oLeft.m_nDue < oRight.m_nDue;
    return static_cast<int>(oLeft.m_nOrder - oRight.m_nOrder) < 0;
}

size_t CKorTimerQueue::PlaceOf(int nTicket) const
{
    return static_cast<size_t>(m_oTickets[nTicket].m_nKey);
}

void CKorTimerQueue::Put(size_t nPlace, const STimer& oTimer)
{
    m_vecHeap[nPlace] = oTimer;
    m_oTickets[oTimer.m_nTicket].m_nKey = static_cast<int>(nPlace);
}

void CKorTimerQueue::Rise(size_t nPlace)
{
    const STimer oTimer = m_vecHeap[nPlace];
    while (nPlace > 0 && IsBefore(oTimer, m_vecHeap[(nPlace - 1) / CHILDREN])) {
        Put(nPlace, m_vecHeap[(nPlace - 1) / CHILDREN]);
        nPlace = (nPlace - 1) / CHILDREN;
    }
    Put(nPlace, oTimer);
}

void CKorTimerQueue::Sink(size_t nPlace)
{
    const STimer oTimer = m_vecHeap[nPlace];
    while (CHILDREN * nPlace + 1 < m_vecHeap.size()) {
        const size_t nChild = FirstChild(nPlace);
        if (!IsBefore(m_vecHeap[nChild], oTimer))
            break;
        Put(nPlace, m_vecHeap[nChild]);
        nPlace = nChild;
    }
    Put(nPlace, oTimer);
}

size_t CKorTimerQueue::FirstChild(size_t nPlace) const
{
    const size_t nBegin = CHILDREN * nPlace + 1;
    const size_t nEnd = std::min(nBegin + CHILDREN, m_vecHeap.size());
    size_t nFirst = nBegin;
    for (size_t nChild = nBegin + 1; nChild < nEnd; ++nChild) {
        if (IsBefore(m_vecHeap[nChild], m_vecHeap[nFirst]))
            nFirst = nChild;
    }
    return nFirst;
}
