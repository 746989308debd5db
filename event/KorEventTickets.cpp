#include "event/KorEventTicketsDetail.h"

#include <climits>

namespace
{

constexpr int FIRST_SIZE = 16;

/// The number after nLast that leads to the same place of a table of that size.
int NumberAfter(int nLast, int nSize)
{
    if (nLast <= INT_MAX - nSize)
        return nLast + nSize;
    const int nPlace = nLast & (nSize - 1);
    return nPlace != 0 ? nPlace : nSize;
}

} // namespace

int CKorTicketTable::Add(SKorTicket::EKind eKind, int nKey, unsigned int nValue,
                         std::function<void()>&& fnHandler)
{
    if (m_nFirstFree == -1)
        Grow();
    SKorTicket& oTicket = m_vecTickets[static_cast<size_t>(m_nFirstFree)];
    m_nFirstFree = oTicket.m_nNext;
    oTicket.m_fnHandler = std::move(fnHandler);
    oTicket.m_nTicket = NumberAfter(oTicket.m_nTicket, static_cast<int>(m_vecTickets.size()));
    oTicket.m_nKey = nKey;
    oTicket.m_nNext = 0;
    oTicket.m_nValue = nValue;
    oTicket.m_nRound = 0;
    oTicket.m_eKind = eKind;
    return oTicket.m_nTicket;
}

std::function<void()> CKorTicketTable::Remove(int nTicket)
{
    const size_t nPlace = Place(nTicket);
    std::function<void()> fnHandler = std::move(m_vecTickets[nPlace].m_fnHandler);
    m_vecTickets[nPlace].m_fnHandler = nullptr;
    Free(nPlace, nTicket);
    return fnHandler;
}

SKorTicket* CKorTicketTable::Find(int nTicket)
{
    if (nTicket <= 0 || m_vecTickets.empty())
        return nullptr;
    SKorTicket& oTicket = (*this)[nTicket];
    const bool bFound = oTicket.m_nTicket == nTicket && oTicket.m_eKind != SKorTicket::KIND_FREE;
    return bFound ? &oTicket : nullptr;
}

int CKorTicketTable::FirstFrom(size_t& rnPlace) const
{
    for (; rnPlace < m_vecTickets.size(); ++rnPlace) {
        if (m_vecTickets[rnPlace].m_eKind != SKorTicket::KIND_FREE)
            return m_vecTickets[rnPlace].m_nTicket;
    }
    return 0;
}

void CKorTicketTable::Free(size_t nPlace, int nLastTicket)
{
    SKorTicket& oTicket = m_vecTickets[nPlace];
    oTicket.m_eKind = SKorTicket::KIND_FREE;
    oTicket.m_nTicket = nLastTicket;
    oTicket.m_nNext = -1;
    if (m_nFirstFree == -1)
        m_nFirstFree = static_cast<int>(nPlace);
    else
        m_vecTickets[static_cast<size_t>(m_nLastFree)].m_nNext = static_cast<int>(nPlace);
    m_nLastFree = static_cast<int>(nPlace);
}

// No place is free. Twice the size leaves each ticket one of the two places that its number can
// lead to now; the other one continues with the numbers that led there before.
void CKorTicketTable::Grow()
{
    const int nOldSize = static_cast<int>(m_vecTickets.size());
    std::vector<SKorTicket> vecOld(static_cast<size_t>(nOldSize == 0 ? FIRST_SIZE : 2 * nOldSize));
    vecOld.swap(m_vecTickets);
    m_nMask = m_vecTickets.size() - 1;
    for (int nPlace = 1; nOldSize == 0 && nPlace <= FIRST_SIZE; ++nPlace)
        Free(Place(nPlace), nPlace - FIRST_SIZE);
    for (SKorTicket& oTicket : vecOld) {
        const int nPartner = oTicket.m_nTicket - nOldSize;
        (*this)[oTicket.m_nTicket] = std::move(oTicket);
        Free(Place(nPartner), nPartner);
    }
}
