#pragma once

#include "event/KorEventHandlesDetail.h"
#include "event/KorEventPostsDetail.h"
#include "event/KorEventSignalsDetail.h"
#include "event/KorEventTimersDetail.h"
#include "event/KorEventWakeDetail.h"

/// What an event loop consists of. Arguments were checked before.
class CKorEventCore
{
public:
    CKorEventCore();
    CKorEventCore(const CKorEventCore&) = delete;
    CKorEventCore& operator=(const CKorEventCore&) = delete;

    int WatchHandle(int nHandle, unsigned int nEvents,
                    std::function<void(unsigned int)>&& fnHandler);
    bool SetEvents(int nTicket, unsigned int nEvents);
    /// @param nPeriod  of a repeated timer, otherwise 0
    int AddTimer(unsigned int nMilliseconds, unsigned int nPeriod,
                 std::function<void()>&& fnHandler);
    int CallOnSignal(int nSignal, std::function<void()>&& fnHandler);
    bool Cancel(int nTicket);
    bool IsActive(int nTicket);
    void Post(std::function<void()>&& fnHandler);
    /// Cancels and drops everything, while all operations still work.
    void Close();
    int Run();
    bool RunOnce(unsigned int nTimeout);
    void Stop(int nResult);

private:
    static constexpr int MAX_READY = 64;

    class CClaim;
    class CReady;
    class CCall;

    /// Opens what the loop needs of the system, anew in a forked process.
    bool Own();
    /// One round. @return false when the system fails; #m_bRan tells whether a handler ran
    bool Turn(std::int64_t nDeadline);
    bool Wait(CReady& oReady, std::int64_t nDeadline);
    bool IsDue();
    std::int64_t TimeToWait(std::int64_t nDeadline);
    void RunSignals();
    void RunPosts();
    void RunTimers();
    void RunTimer(int nTicket);
    void RunPeriod(int nTicket);
    void RunHandles(CReady& oReady);
    void RunHandle(int nHandle, unsigned int nReady);
    void Call(int nTicket);
    void DropHandle(int nHandle);
    bool CancelHandle(int nTicket);

    CKorTicketTable m_oTickets;
    CKorTimerQueue m_oTimers;
    CKorEventWake m_oWake;
    CKorEventHandles m_oHandles;
    CKorEventSignals m_oSignals;
    CKorEventPosts m_oPosts;
    std::atomic<bool> m_bRunning{false};
    std::atomic<bool> m_bStop{false};
    std::atomic<int> m_nResult{0};
    unsigned int m_nRound = 0;
    unsigned int m_nTold = 0; ///< What the handler of a handle is told.
    std::int64_t m_nNow = 0;  ///< The time in this round as far as it is known, otherwise 0.
    bool m_bRan = false;      ///< Whether a handler ran in this round.
};
