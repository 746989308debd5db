#include "event/KorEventLoop.h"

#include "event/KorEventCoreDetail.h"

#include <cerrno>

namespace
{

constexpr unsigned int ALL_EVENTS =
    CKorEventLoop::EVENT_READABLE | CKorEventLoop::EVENT_WRITABLE | CKorEventLoop::EVENT_HANGUP;

bool AreEvents(unsigned int nEvents)
{
    return nEvents != 0 && (nEvents & ~ALL_EVENTS) == 0;
}

template <typename TResult>
TResult Invalid(TResult nResult)
{
    errno = EINVAL;
    return nResult;
}

} // namespace

CKorEventLoop::CKorEventLoop() : m_pCore(std::make_unique<CKorEventCore>()) {}

// What handlers hold may use the loop while it is destroyed.
CKorEventLoop::~CKorEventLoop()
{
    m_pCore->Close();
}

int CKorEventLoop::WatchHandle(int nHandle, unsigned int nEvents, HandleHandler fnHandler)
{
    if (!fnHandler || !AreEvents(nEvents))
        return Invalid(-1);
    return m_pCore->WatchHandle(nHandle, nEvents, std::move(fnHandler));
}

bool CKorEventLoop::SetEvents(int nTicket, unsigned int nEvents)
{
    if (!AreEvents(nEvents))
        return Invalid(false);
    return m_pCore->SetEvents(nTicket, nEvents);
}

int CKorEventLoop::CallAfter(unsigned int nMilliseconds, Handler fnHandler)
{
    if (!fnHandler)
        return Invalid(-1);
    return m_pCore->AddTimer(nMilliseconds, 0, std::move(fnHandler));
}

int CKorEventLoop::CallEvery(unsigned int nMilliseconds, Handler fnHandler)
{
    if (!fnHandler || nMilliseconds == 0)
        return Invalid(-1);
    return m_pCore->AddTimer(nMilliseconds, nMilliseconds, std::move(fnHandler));
}

int CKorEventLoop::CallOnSignal(int nSignal, Handler fnHandler)
{
    if (!fnHandler)
        return Invalid(-1);
    return m_pCore->CallOnSignal(nSignal, std::move(fnHandler));
}

bool CKorEventLoop::Cancel(int nTicket)
{
    return m_pCore->Cancel(nTicket) || Invalid(false);
}

bool CKorEventLoop::IsActive(int nTicket) const
{
    return m_pCore->IsActive(nTicket);
}

bool CKorEventLoop::Post(Handler fnHandler)
{
    if (!fnHandler)
        return Invalid(false);
    m_pCore->Post(std::move(fnHandler));
    return true;
}

int CKorEventLoop::Run()
{
    return m_pCore->Run();
}

bool CKorEventLoop::RunOnce(unsigned int nTimeout)
{
    return m_pCore->RunOnce(nTimeout);
}

void CKorEventLoop::Stop(int nResult)
{
    m_pCore->Stop(nResult);
}
