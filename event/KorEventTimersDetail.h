#pragma once

#include "event/KorEventTicketsDetail.h"

#include <cstdint>

/// The monotonic clock in nanoseconds.
std::int64_t KorEventNow();

constexpr std::int64_t KOR_SECOND = 1000000000;
constexpr std::int64_t KOR_MILLISECOND = 1000000;

/// A time that does not come.
constexpr std::int64_t KOR_NEVER = INT64_MAX;

/// The time some milliseconds from now; 0xFFFFFFFF of them never pass.
std::int64_t KorEventDeadline(unsigned int nMilliseconds);

/// Timers by the time at which they are due: a heap that knows the place of each ticket. Of those
/// due at the same time the one that was added first comes first.
class CKorTimerQueue
{
public:
    explicit CKorTimerQueue(CKorTicketTable& oTickets) : m_oTickets(oTickets) {}

    /// Makes room for one more timer, so that Add() cannot fail.
    void Reserve() { MakeRoom(m_vecHeap); }
    void Add(int nTicket, std::int64_t nDue);
    void Remove(int nTicket);
    /// Has a repeated timer be due at its first turn after @p nNow.
    void Advance(int nTicket, std::int64_t nNow);
    /// The first ticket, 0 when there is none.
    int First() const { return m_vecHeap.empty() ? 0 : m_vecHeap.front().m_nTicket; }
    /// When the first one is due.
    std::int64_t FirstDue() const
    {
        return m_vecHeap.empty() ? KOR_NEVER : m_vecHeap.front().m_nDue;
    }

private:
    struct STimer
    {
        std::int64_t m_nDue;
        unsigned int m_nOrder;
        int m_nTicket;
    };

    static bool IsBefore(const STimer& oLeft, const STimer& oRight);
    size_t PlaceOf(int nTicket) const;
    void Put(size_t nPlace, const STimer& oTimer);
    void Rise(size_t nPlace);
    void Sink(size_t nPlace);
    /// Of a place that has children, the one that is due first.
    size_t FirstChild(size_t nPlace) const;

    CKorTicketTable& m_oTickets;
    std::vector<STimer> m_vecHeap;
    unsigned int m_nOrder = 0;
};
