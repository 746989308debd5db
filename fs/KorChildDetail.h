#pragma once

#include "fs/KorHandleDetail.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <poll.h>
#include <pthread.h>

/// A child as its object and the thread that waits for it see it. The one that lives longer
/// destroys it.
struct SKorChildState
{
    SKorChildState();

    std::mutex m_oMutex;        ///< Held while the child is started, signalled or collected.
    pid_t m_nProcessID = 0;     ///< 0: it could not be started.
    int m_nExitStatus = -1;     ///< Valid after the end, as the next.
    int m_nEndSignal = 0;       ///< The signal that ended it.
    CKorHandle m_oEnd;          ///< Readable when it has ended.
    std::atomic<bool> m_bEnded; ///< Set last.
};

/// Makes the thread that waits for the child as soon as the mutex is free.
/// @return false with `errno` when the system cannot
bool KorStartToWait(const std::shared_ptr<SKorChildState>& pState, pthread_t& rnThread);

/// poll() with a time-out in milliseconds of which 0xFFFFFFFF never ends; longer ones than poll()
/// can wait are cut.
int KorPoll(pollfd* pPolls, unsigned int nCount, unsigned int nTimeout);
