#include "serial/KorLineReceptionDetail.h"

#include "serial/KorLineCallDetail.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace
{

using CReceptions = std::list<std::shared_ptr<CKorLineReception>>;

/// What a new thread gets.
struct SStart
{
    std::shared_ptr<CKorLineState> m_pState;
    std::shared_ptr<CKorLineReception> m_pReception;
};

/// While it lives, threads are started with all signals blocked but those that a thread causes
/// itself.
class CBlockedSignals
{
public:
    CBlockedSignals()
    {
        sigset_t oSignals;
        sigfillset(&oSignals);
        for (const int nSignal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP})
            sigdelset(&oSignals, nSignal);
        pthread_sigmask(SIG_BLOCK, &oSignals, &m_oBefore);
    }
    ~CBlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_oBefore, nullptr); }
    CBlockedSignals(const CBlockedSignals&) = delete;
    CBlockedSignals& operator=(const CBlockedSignals&) = delete;

private:
    sigset_t m_oBefore;
};

void Remove(CReceptions& rlstReceptions, const CKorLineReception* pReception)
{
    auto it = rlstReceptions.begin();
    while (it->get() != pReception)
        ++it;
    rlstReceptions.erase(it);
}

/// A thread that nobody waits for tidies up after itself.
void Leave(CKorLineState& oState, const CKorLineReception& oReception)
{
    const std::lock_guard<std::mutex> oLock(oState.m_oMutex);
    if (oReception.m_bJoined)
        return;
    pthread_detach(pthread_self());
    Remove(oState.m_lstReceptions, &oReception);
}

void* RunThread(void* pArgument)
{
    const std::unique_ptr<SStart> pStart(static_cast<SStart*>(pArgument));
    pStart->m_pReception->Run(*pStart->m_pState);
    Leave(*pStart->m_pState, *pStart->m_pReception);
    return nullptr;
}

bool IsReceptionsThread(const CKorLineState& oState)
{
    for (const auto& p : oState.m_lstReceptions) {
        if (pthread_equal(p->m_nThread, pthread_self()) != 0)
            return true;
    }
    return false;
}

/// The first that shall end; null without one.
std::shared_ptr<CKorLineReception> EndedOf(const CReceptions& lstReceptions)
{
    for (const auto& p : lstReceptions) {
        if (p->m_bEnded)
            return p;
    }
    return nullptr;
}

} // namespace

CKorLineReception::CKorLineReception(CKorSerialLine::DataHandler fnData,
                                     CKorSerialLine::HangupHandler fnHangup)
    : m_fnData(std::move(fnData)), m_fnHangup(std::move(fnHangup)), m_acBlock()
{
}

void CKorLineReception::Run(CKorLineState& oState)
{
    std::size_t nCount = 0;
    int nErrno = 0;
    while ((nErrno = Receive(oState, nCount)) == 0)
        m_fnData(m_acBlock, static_cast<unsigned int>(nCount));
    if (nErrno != ECANCELED && m_fnHangup)
        m_fnHangup(nErrno);
}

/// Takes a block that was received, or waits for one. ECANCELED when the reception shall end.
int CKorLineReception::Receive(CKorLineState& oState, std::size_t& rnCount)
{
    CKorLineCall oCall(oState);
    while (!m_bEnded && oState.m_oHeld.Size() == 0 && oState.m_nHangupErrno == 0) {
        int nErrno = oCall.WaitForInput(m_oWake);
        if (nErrno == 0 && !m_bEnded)
            nErrno = oCall.ReadBlock();
        if (nErrno != 0 && nErrno != EAGAIN)
            oState.HangUp(nErrno);
    }
    if (m_bEnded)
        return ECANCELED;
    rnCount = std::min(oState.m_oHeld.Size(), sizeof m_acBlock);
    if (rnCount == 0) {
        KorEndLineReception(oState);
        return oState.m_nHangupErrno;
    }
    std::copy_n(oState.m_oHeld.Data(), rnCount, m_acBlock);
    oState.m_oHeld.Drop(rnCount);
    return 0;
}

int KorStartLineReception(const std::shared_ptr<CKorLineState>& pState,
                          std::shared_ptr<CKorLineReception> pReception)
{
    int nErrno = pReception->m_oWake.Open();
    if (nErrno != 0)
        return nErrno;
    pState->m_oHeld.MakeRoom(CKorLineState::BLOCK); // the thread never needs more
    std::unique_ptr<SStart> pStart(new SStart{pState, pReception});
    pState->m_lstReceptions.push_back(pReception);
    {
        const CBlockedSignals oBlocked;
        nErrno = pthread_create(&pReception->m_nThread, nullptr, RunThread, pStart.get());
    }
    if (nErrno != 0) {
        pState->m_lstReceptions.pop_back();
        return nErrno;
    }
    static_cast<void>(pStart.release()); // the thread's now
    pState->m_pReception = std::move(pReception);
    return 0;
}

void KorEndLineReception(CKorLineState& oState)
{
    if (oState.m_pReception == nullptr)
        return;
    oState.m_pReception->m_bEnded = true;
    oState.m_pReception->m_oWake.Raise();
    oState.m_pReception.reset();
}

void KorJoinLineReceptions(CKorLineState& oState)
{
    std::unique_lock<std::mutex> oLock(oState.m_oMutex);
    CReceptions& rlstAll = oState.m_lstReceptions;
    while (!IsReceptionsThread(oState)) {
        const std::shared_ptr<CKorLineReception> pReception = EndedOf(rlstAll);
        if (pReception == nullptr)
            return;
        if (pReception->m_bJoined) {
            oState.m_oChanged.wait(oLock);
            continue;
        }
        pReception->m_bJoined = true;
        oLock.unlock();
        pthread_join(pReception->m_nThread, nullptr);
        oLock.lock();
        Remove(rlstAll, pReception.get());
        oState.m_oChanged.notify_all();
    }
}
