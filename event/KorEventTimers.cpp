#include "event/KorEventTimersDetail.h"

#include <ctime>

std::int64_t KorEventNow()
{
    timespec oNow;
    clock_gettime(CLOCK_MONOTONIC, &oNow);
    return static_cast<std::int64_t>(oNow.tv_sec) * KOR_SECOND + oNow.tv_nsec;
}

std::int64_t KorEventAfter(std::int64_t nNow, unsigned int nMilliseconds)
{
    return nMilliseconds == 0xFFFFFFFF ? KOR_NEVER : nNow + nMilliseconds * KOR_MILLISECOND;
}

void CKorTimerQueue::Reserve()
{
    if (m_vecHeap.size() == m_vecHeap.capacity())
        m_vecHeap.reserve(2 * m_vecHeap.size() + 8);
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
    while (nPlace > 0 && IsBefore(oTimer, m_vecHeap[(nPlace - 1) / 2])) {
        Put(nPlace, m_vecHeap[(nPlace - 1) / 2]);
        nPlace = (nPlace - 1) / 2;
    }
    Put(nPlace, oTimer);
}

void CKorTimerQueue::Sink(size_t nPlace)
{
    const STimer oTimer = m_vecHeap[nPlace];
    for (size_t nChild = 2 * nPlace + 1; nChild < m_vecHeap.size(); nChild = 2 * nPlace + 1) {
        if (nChild + 1 < m_vecHeap.size() && IsBefore(m_vecHeap[nChild + 1], m_vecHeap[nChild]))
            ++nChild;
        if (!IsBefore(m_vecHeap[nChild], oTimer))
            break;
        Put(nPlace, m_vecHeap[nChild]);
        nPlace = nChild;
    }
    Put(nPlace, oTimer);
}
