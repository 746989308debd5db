#pragma once

// Why the calls of each thread failed. Not installed.

#include <cstddef>
#include <mutex>
#include <pthread.h>

/// The last error of each of the last eight threads that had one.
class CKorLineErrors
{
public:
    void Set(int nErrno)
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        SEntry* pEntry = Find();
        if (pEntry == nullptr) {
            pEntry = &m_aoEntries[m_nNext];
            m_nNext = (m_nNext + 1) % THREADS;
        }
        *pEntry = {pthread_self(), nErrno};
    }

    int Get() const
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        const SEntry* const pEntry = const_cast<CKorLineErrors*>(this)->Find();
        return pEntry != nullptr ? pEntry->m_nErrno : 0;
    }

private:
    struct SEntry
    {
        pthread_t m_nThread;
        int m_nErrno; // 0 for an entry that is free
    };
    static constexpr std::size_t THREADS = 8;

    SEntry* Find()
    {
        for (SEntry& oEntry : m_aoEntries) {
            if (oEntry.m_nErrno != 0 && pthread_equal(oEntry.m_nThread, pthread_self()) != 0)
                return &oEntry;
        }
        return nullptr;
    }

    mutable std::mutex m_oMutex;
    SEntry m_aoEntries[THREADS] = {};
    std::size_t m_nNext = 0;
};
