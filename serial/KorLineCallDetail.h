#pragma once

// How the calls on a line share it. Not installed.

#include "serial/KorLineStateDetail.h"

#include <cerrno>
#include <mutex>

/// A function of the descriptor that gives 0 or an error number, lent for a call. All of them go
/// through one copy of what a call does around them.
class CKorLineJob
{
public:
    template <typename TFunction>
    CKorLineJob(const TFunction& fnFunction)
        : m_pFunction(&fnFunction), m_pfnRun([](const void* pFunction, int hLine) {
              return (*static_cast<const TFunction*>(pFunction))(hLine);
          })
    {
    }
    int Run(int hLine) const { return m_pfnRun(m_pFunction, hLine); }

private:
    const void* const m_pFunction;
    int (*const m_pfnRun)(const void* pFunction, int hLine);
};

/// One call on a line. It has the state's mutex while it lives, but not while it reads, writes,
/// waits or runs something on the descriptor; then it counts as a use, and Close() waits for it.
/// Operations give 0 or an error number.
class CKorLineCall
{
public:
    explicit CKorLineCall(CKorLineState& oState)
        : m_oState(oState), m_oLock(oState.m_oMutex), m_nCancels(oState.m_nCancels)
    {
    }

    /// EBADF for a closed line, the hang-up's error for one that is lost.
    int CheckLine() const;
    /// EBADF for a closed line, EOPNOTSUPP during a reception.
    int CheckReading() const;
    /// ECANCELED when the call shall end.
    int CheckCancel() const;

    /// Waits until the line is ready or hung up; EAGAIN when the moment came first.
    int Wait(short nEvents, std::int64_t nMoment);
    /// The same without limit for a reception, which has a wake of its own.
    int WaitForInput(const CKorLineWake& oWake);
    /// Adds a block to the held bytes; EAGAIN when none came until the moment.
    int FillUntil(std::int64_t nMoment);
    /// The same within the time of a call, of which one attempt is always made.
    int Fill(CKorLineDeadline& rDeadline);
    int ReadBlock();
    int WriteBlock(const char* pData, std::size_t nLength, std::size_t& rnWritten);
    /// Moves held bytes into the string.
    int Give(std::size_t nCount, std::string& strData);

    int Run(const CKorLineJob& oJob);

private:
    /// A use of the descriptor without the mutex.
    struct COutside
    {
        explicit COutside(CKorLineCall& oCall);
        ~COutside();
        COutside(const COutside&) = delete;
        COutside& operator=(const COutside&) = delete;

        CKorLineCall& m_oCall;
        const int m_hLine;
    };

    int ReadOrWait(std::int64_t nMoment);

    CKorLineState& m_oState;
    std::unique_lock<std::mutex> m_oLock;
    const unsigned int m_nCancels;
};
