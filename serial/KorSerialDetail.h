#pragma once

// What the sources of the serial port share. Not installed.

#include "base/KorThread.h"
#include "serial/KorSerial.h"

#include <cerrno>
#include <cstdint>

// What GetState() of an ended thread returns. The number, because a board's own base library
// need not have a name for it.
constexpr int KOR_THREAD_ENDED = 3;

constexpr int KOR_NO_PORT = -1;

/// How often a wait looks, in milliseconds.
constexpr unsigned int KOR_POLL_INTERVAL = 25;

/// How long close() waits for the receive thread, in milliseconds.
constexpr std::uint64_t KOR_CLOSE_LIMIT = 1000;

/// The result for a failed system call.
inline int KorErrnoResult()
{
    return errno == EAGAIN ? CKorSerial::SERIAL_WOULDBLOCK : CKorSerial::SERIAL_IO_ERROR;
}

/// Waits up to @p nLimit milliseconds, counted in sleeps, for the end of a thread.
inline bool KorEndsWithin(const CKorThread& oThread, std::uint64_t nLimit)
{
    for (std::uint64_t nElapsed = 0; oThread.GetState() != KOR_THREAD_ENDED;
         nElapsed += KOR_POLL_INTERVAL) {
        if (nElapsed >= nLimit)
            return false;
        CKorThread::Sleep(0, KOR_POLL_INTERVAL);
    }
    return true;
}
