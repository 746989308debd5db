#pragma once

#include "base/KorMutex.h"
#include "base/KorThreadSafety.h"

/// Holds a mutex until the end of the scope, also when an exception ends it.
class KOR_SCOPED_CAPABILITY KorMutexHold
{
public:
    // A wait without limit ends with the lock held, which its result cannot tell to clang. The
    // number instead of its name: a board's own base library need not have named it.
    explicit KorMutexHold(CKorMutex& oMutex) KOR_ACQUIRE(oMutex) KOR_NO_THREAD_SAFETY_ANALYSIS
        : m_oMutex(oMutex)
    {
        m_oMutex.Lock(0xFFFFFFFF);
    }
    ~KorMutexHold() KOR_RELEASE() { m_oMutex.Unlock(); }
    KorMutexHold(const KorMutexHold&) = delete;
    KorMutexHold& operator=(const KorMutexHold&) = delete;

private:
    CKorMutex& m_oMutex;
};
