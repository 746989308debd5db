#pragma once

// What a line is made of. Not installed.

#include "serial/KorLineBufferDetail.h"
#include "serial/KorLineDeviceDetail.h"
#include "serial/KorLineErrorsDetail.h"
#include "serial/KorLineWaitDetail.h"
#include "serial/KorSerialLine.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>

class CKorLineReception;

/// The state of a line. Mutexes are taken in the order life, traffic, state; that of the state is
/// never held while the line is read, written or waited for, nor while a handler runs.
class CKorLineState
{
public:
    static constexpr std::size_t BLOCK = 4096;

    /// Opens the device. With #m_oLifeMutex. @return 0 or an error number
    int Open(const char* pszDevice, const SKorLineOptions& oOptions);
    /// Closes the device once no call uses it. With #m_oLifeMutex.
    void Close();
    /// Ends the calls that run, as far as they wait. With #m_oMutex.
    void Cancel();
    /// A call that waited and was cancelled goes on. With #m_oMutex.
    void NoticeCancel();
    /// Reads a block from the line into the held bytes. With #m_oTrafficMutex alone.
    int ReadBlock(int hLine);
    /// Writes what the line takes at once. With #m_oTrafficMutex alone.
    int WriteBlock(int hLine, const char* pData, std::size_t nLength, std::size_t& rnWritten);
    /// A call begins and ends to rely on the descriptor. With #m_oMutex.
    void BeginUse() { ++m_nUses; }
    void EndUse();
    /// Remembers the first error of a line that is lost. With #m_oMutex.
    void HangUp(int nErrno);
    bool IsHungUp() const { return m_nHangupErrno != 0; }

    std::mutex m_oLifeMutex;  ///< For who opens, closes or sets the device.
    CKorLineDevice m_oDevice; ///< Guarded by it.

    std::mutex m_oTrafficMutex; ///< For who reads or writes, so that the trace shows the order.
    CKorSerialLine::TraceHandler m_fnTrace; ///< Guarded by it.
    char m_acBlock[BLOCK];                  ///< Guarded by it.

    mutable std::mutex m_oMutex; ///< Guards all that follows.
    std::condition_variable m_oChanged;
    int m_hLine = CKorLineDevice::NO_HANDLE;
    bool m_bClosing = false;       ///< No new use may begin.
    unsigned int m_nUses = 0;      ///< Calls that use the descriptor just now.
    unsigned int m_nWaiting = 0;   ///< Those of them that wait and are not cancelled.
    unsigned int m_nCancelled = 0; ///< Those that are, and did not notice yet.
    unsigned int m_nCancels = 0;   ///< Counts calls of Cancel().
    CKorLineWake m_oWake;          ///< Ends all waits while it is raised.
    int m_nHangupErrno = 0;
    CKorLineBuffer m_oHeld;
    std::int64_t m_nArrival = 0; ///< When the last held byte was read.
    unsigned int m_nLooks = 0;   ///< How many of the next reads wait before they read.
    unsigned int m_nWritten = 0;
    std::shared_ptr<CKorLineReception> m_pReception; ///< The one that runs.
    /// All whose threads have not ended.
    std::list<std::shared_ptr<CKorLineReception>> m_lstReceptions;

    CKorLineErrors m_oErrors; ///< Guards itself.
};
