#include "base/KorMutex.h"

#include <ctime>

namespace
{

// What m_nState holds. Only whoever is to wait, and whoever frees a mutex that somebody may wait
// for, goes through the guard; a mutex that is free is taken and given back by one exchange each.
constexpr int FREE = 0;
constexpr int HELD = 1;
constexpr int AWAITED = 2; // held, and somebody may wait for it

timespec MonotonicTimeIn(unsigned int nMilliseconds)
{
    timespec oTime;
    clock_gettime(CLOCK_MONOTONIC, &oTime);
    oTime.tv_sec += static_cast<time_t>(nMilliseconds / 1000);
    oTime.tv_nsec += static_cast<long>(nMilliseconds % 1000) * 1000000L;
    if (oTime.tv_nsec >= 1000000000L) {
        oTime.tv_nsec -= 1000000000L;
        ++oTime.tv_sec;
    }
    return oTime;
}

} // namespace

// A state and a condition variable instead of a plain pthread mutex: only the condition
// variable can be told to time out on the monotonic clock in every C library.
CKorMutex::CKorMutex() : m_nState(FREE)
{
    pthread_mutex_init(&m_oGuard, nullptr);
    pthread_condattr_t oAttributes;
    pthread_condattr_init(&oAttributes);
    pthread_condattr_setclock(&oAttributes, CLOCK_MONOTONIC);
    pthread_cond_init(&m_oFreed, &oAttributes);
    pthread_condattr_destroy(&oAttributes);
}

CKorMutex::~CKorMutex()
{
    pthread_cond_destroy(&m_oFreed);
    pthread_mutex_destroy(&m_oGuard);
}

bool CKorMutex::Lock(unsigned int nTimeout)
{
    int nState = FREE;
    if (m_nState.compare_exchange_strong(nState, HELD, std::memory_order_acquire))
        return true;
    return nTimeout != 0 && WaitAndTake(nTimeout);
}

bool CKorMutex::WaitAndTake(unsigned int nTimeout)
{
    const timespec oDeadline = MonotonicTimeIn(nTimeout);
    pthread_mutex_lock(&m_oGuard);
    // Once more after the time ran out: the signal may have come at that very moment.
    bool bInTime = true;
    bool bTaken = false;
    while (!(bTaken = m_nState.exchange(AWAITED, std::memory_order_acquire) == FREE) && bInTime)
        bInTime = WaitForSignal(nTimeout, oDeadline);
    pthread_mutex_unlock(&m_oGuard);
    return bTaken;
}

bool CKorMutex::WaitForSignal(unsigned int nTimeout, const timespec& oDeadline)
{
    if (nTimeout == WAIT_FOREVER)
        return pthread_cond_wait(&m_oFreed, &m_oGuard) == 0;
    return pthread_cond_timedwait(&m_oFreed, &m_oGuard, &oDeadline) == 0;
}

void CKorMutex::Unlock()
{
    if (m_nState.exchange(FREE, std::memory_order_release) != AWAITED)
        return;
    // Under the guard, so that a thread which has just found the mutex held is waiting by now.
    pthread_mutex_lock(&m_oGuard);
    pthread_cond_signal(&m_oFreed);
    pthread_mutex_unlock(&m_oGuard);
}
