#pragma once

#include "event/KorEventTicketsDetail.h"
#include "event/KorEventWakeDetail.h"

#include <signal.h>

/// The signals that one loop waits for.
class CKorEventSignals
{
public:
    CKorEventSignals(CKorTicketTable& oTickets, CKorEventWake& oWake)
        : m_oTickets(oTickets), m_oWake(oWake)
    {
    }

    /// @return the ticket, or -1 with `errno`
    int Add(int nSignal, std::function<void()>&& fnHandler);
    /// Takes a ticket out of its signal's list; the last one gives the signal back.
    void Remove(int nTicket);
    /// Whether a handler is to be called.
    bool IsDue();
    /// Makes the tickets due whose signals came.
    void MarkDue();
    /// The ticket whose handler is to be called next, which is not due any more; 0 for none.
    int TakeDue();
    /// Goes on in a forked process.
    void Adopt();

private:
    struct SSignal
    {
        int m_nSignal;
        int m_nFirst; ///< its first ticket
        struct sigaction m_oFormer;
    };

    SSignal* Find(int nSignal);
    SSignal* Claim(int nSignal);
    void Release(SSignal& oSignal);
    int FirstDue();

    CKorTicketTable& m_oTickets;
    CKorEventWake& m_oWake;
    std::vector<SSignal> m_vecSignals;
};
