#pragma once

/// @file
/// Mutual exclusion with a time limit.

#include "base/KorBaseExport.h"
#include "base/KorThreadSafety.h"

#include <atomic>
#include <pthread.h>

/// @addtogroup threads
/// @{

/// A lock that one thread holds at a time.
///
/// Not recursive: a thread that locks it again waits like any other. Every operation may be
/// called from any thread, but not from a signal handler. Destroy it only when nobody holds it
/// or waits for it and each Unlock() has returned.
class TARVO_BASE_API KOR_CAPABILITY("mutex") CKorMutex
{
public:
    /// Time-out of Lock() that waits without limit.
    static constexpr unsigned int WAIT_FOREVER = 0xFFFFFFFF;

    CKorMutex();
    ~CKorMutex();
    CKorMutex(const CKorMutex&) = delete;
    CKorMutex& operator=(const CKorMutex&) = delete;

    /// Takes the lock, waiting for it up to @p nTimeout milliseconds on the monotonic clock: 0
    /// only tries, #WAIT_FOREVER waits without limit.
    /// @return true when the calling thread now holds the lock, false when the time ran out.
    bool Lock(unsigned int nTimeout) KOR_TRY_ACQUIRE(true);

    /// Releases the lock and lets one waiting thread go on. Without effect when nobody holds it.
    void Unlock() KOR_RELEASE();

private:
    TARVO_BASE_LOCAL bool WaitAndTake(unsigned int nTimeout);
    TARVO_BASE_LOCAL bool WaitForSignal(unsigned int nTimeout, const timespec& oDeadline);

    pthread_mutex_t m_oGuard;
    pthread_cond_t m_oFreed;
    std::atomic<int> m_nState;
};

/// @}
