#include "base/KorMutex.h"

#include <ctime>

namespace
{

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

// A flag under a condition variable instead of a plain pthread mutex: only the condition
// variable can be told to time out on the monotonic clock in every C library.
CKorMutex::CKorMutex() : m_bHeld(false)
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
    pthread_mutex_lock(&m_oGuard);
    const bool bFree = WaitUntilFree(nTimeout);
    if (bFree)
        m_bHeld = true;
    pthread_mutex_unlock(&m_oGuard);
    return bFree;
}

bool CKorMutex::WaitUntilFree(unsigned int nTimeout)
{
    if (!m_bHeld || nTimeout == 0)
        return !m_bHeld;

    const timespec oDeadline = MonotonicTimeIn(nTimeout);
    int nError = 0;
    while (m_bHeld && nError == 0) {
        nError = nTimeout == WAIT_FOREVER
                     ? pthread_cond_wait(&m_oFreed, &m_oGuard)
                     : pthread_cond_timedwait(&m_oFreed, &m_oGuard, &oDeadline);
    }
    return !m_bHeld;
}

void CKorMutex::Unlock()
{
    pthread_mutex_lock(&m_oGuard);
    m_bHeld = false;
    pthread_cond_signal(&m_oFreed);
    pthread_mutex_unlock(&m_oGuard);
}
