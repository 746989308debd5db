#include "event/KorEventSignalsDetail.h"

#include "base/KorThread.h"

#include <cerrno>
#include <unistd.h>

namespace
{

/// Which loop a signal belongs to, for the signal handler. A handler may run on any thread while
/// the loop gives the signal back, so it announces itself before it looks at the loop.
struct SSlot
{
    std::atomic<CKorEventWake*> m_pLoop{nullptr};
    std::atomic<int> m_nProcess{0}; ///< the process whose signals are told
    std::atomic<int> m_nRunning{0}; ///< handlers that may be using m_pLoop
    std::atomic<bool> m_bCame{false};
};

SSlot s_aoSlots[_NSIG];

SSlot& SlotOf(int nSignal)
{
    return s_aoSlots[static_cast<size_t>(nSignal)];
}

// In a child of vfork() this memory is the parent's.
void OnSignal(int nSignal)
{
    const int nErrno = errno;
    SSlot& oSlot = SlotOf(nSignal);
    if (oSlot.m_nProcess == getpid()) {
        ++oSlot.m_nRunning;
        CKorEventWake* pLoop = oSlot.m_pLoop;
        if (pLoop != nullptr) {
            oSlot.m_bCame = true;
            pLoop->Wake();
        }
        --oSlot.m_nRunning;
    }
    errno = nErrno;
}

bool Handle(int nSignal, struct sigaction& oFormer)
{
    struct sigaction oAction = {};
    oAction.sa_handler = OnSignal;
    oAction.sa_flags = SA_RESTART;
    sigemptyset(&oAction.sa_mask);
    return sigaction(nSignal, &oAction, &oFormer) == 0;
}

/// Waits for the handlers that still run on other threads. They are about to end; sleeping lets
/// them do so on a single processor whatever the priorities.
void ReleaseSlot(SSlot& oSlot)
{
    const bool bOwn = oSlot.m_nProcess == getpid();
    oSlot.m_nProcess = 0;
    oSlot.m_pLoop = nullptr;
    while (bOwn && oSlot.m_nRunning != 0)
        CKorThread::Sleep(0, 1);
}

} // namespace

int CKorEventSignals::Add(int nSignal, std::function<void()>&& fnHandler)
{
    MakeRoom(m_vecSignals);
    const int nTicket =
        m_oTickets.Add(SKorTicket::KIND_SIGNAL, nSignal, false, std::move(fnHandler));
    SSignal* pSignal = Find(nSignal);
    if (pSignal == nullptr)
        pSignal = Claim(nSignal);
    if (pSignal == nullptr) {
        const int nErrno = errno;
        m_oTickets.Remove(nTicket);
        errno = nErrno;
        return -1;
    }
    int* pnLink = &pSignal->m_nFirst;
    while (*pnLink != 0)
        pnLink = &m_oTickets[*pnLink].m_nNext;
    *pnLink = nTicket;
    return nTicket;
}

void CKorEventSignals::Remove(int nTicket)
{
    SSignal& oSignal = *Find(m_oTickets[nTicket].m_nKey);
    int* pnLink = &oSignal.m_nFirst;
    while (*pnLink != nTicket)
        pnLink = &m_oTickets[*pnLink].m_nNext;
    *pnLink = m_oTickets[nTicket].m_nNext;
    if (oSignal.m_nFirst == 0)
        Release(oSignal);
}

bool CKorEventSignals::IsDue()
{
    for (const SSignal& oSignal : m_vecSignals) {
        if (SlotOf(oSignal.m_nSignal).m_bCame)
            return true;
    }
    return FirstDue() != 0;
}

int CKorEventSignals::TakeDue()
{
    const int nTicket = FirstDue();
    if (nTicket != 0)
        m_oTickets[nTicket].m_nValue = false;
    return nTicket;
}

void CKorEventSignals::Adopt()
{
    for (const SSignal& oSignal : m_vecSignals) {
        SSlot& oSlot = SlotOf(oSignal.m_nSignal);
        oSlot.m_nRunning = 0; // those that ran during the fork stayed with the process before
        oSlot.m_nProcess = getpid();
    }
}

CKorEventSignals::SSignal* CKorEventSignals::Find(int nSignal)
{
    for (SSignal& oSignal : m_vecSignals) {
        if (oSignal.m_nSignal == nSignal)
            return &oSignal;
    }
    return nullptr;
}

CKorEventSignals::SSignal* CKorEventSignals::Claim(int nSignal)
{
    if (nSignal <= 0 || nSignal >= _NSIG) {
        errno = EINVAL;
        return nullptr;
    }
    SSlot& oSlot = SlotOf(nSignal);
    CKorEventWake* pNone = nullptr;
    if (!oSlot.m_pLoop.compare_exchange_strong(pNone, &m_oWake)) {
        errno = EBUSY;
        return nullptr;
    }
    oSlot.m_bCame = false;
    oSlot.m_nProcess = getpid();
    SSignal oSignal = {nSignal, 0, {}};
    if (!Handle(nSignal, oSignal.m_oFormer)) {
        ReleaseSlot(oSlot);
        return nullptr;
    }
    m_vecSignals.push_back(oSignal);
    return &m_vecSignals.back();
}

void CKorEventSignals::Release(SSignal& oSignal)
{
    sigaction(oSignal.m_nSignal, &oSignal.m_oFormer, nullptr);
    ReleaseSlot(SlotOf(oSignal.m_nSignal));
    m_vecSignals.erase(m_vecSignals.begin() + (&oSignal - m_vecSignals.data()));
}

void CKorEventSignals::MarkDue()
{
    for (const SSignal& oSignal : m_vecSignals) {
        if (!SlotOf(oSignal.m_nSignal).m_bCame.exchange(false))
            continue;
        for (int nTicket = oSignal.m_nFirst; nTicket != 0; nTicket = m_oTickets[nTicket].m_nNext)
            m_oTickets[nTicket].m_nValue = true;
    }
}

int CKorEventSignals::FirstDue()
{
    for (const SSignal& oSignal : m_vecSignals) {
        for (int nTicket = oSignal.m_nFirst; nTicket != 0; nTicket = m_oTickets[nTicket].m_nNext) {
            if (m_oTickets[nTicket].m_nValue != 0)
                return nTicket;
        }
    }
    return 0;
}
