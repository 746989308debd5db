#pragma once

/// @file
/// Time-outs and running times on the monotonic clock.
///
/// For new programs. The clock does not jump when somebody sets the time of day, as differences
/// of CKorUTCTime::GetCurrentTime() do.
///
///     CKorStopwatch oWatch;
///     for (CKorTimeout oTimeout(500); !IsAnswered() && !oTimeout.IsExpired();)
///         WaitForBytes(oTimeout.GetRemaining());
///     Report(oWatch.GetElapsed().GetTotalMilliSeconds());

#include "time/KorTimeDiff.h"

#include <chrono>

/// @addtogroup clocks
/// @{

/// A time span from now on, by which something has to be done.
///
/// An object serves one thread at a time; any number of threads may ask it at once.
class CKorTimeout
{
public:
    /// Begins now. A number may stand for a time-out.
    /// @param nMilliseconds  the length; 0 has passed at once, 0xFFFFFFFF never passes
    CKorTimeout(unsigned int nMilliseconds)
        : m_nMilliseconds(nMilliseconds), m_oBegin(std::chrono::steady_clock::now())
    {
    }
    CKorTimeout(const CKorTimeout&) = delete;
    CKorTimeout& operator=(const CKorTimeout&) = delete;
    virtual ~CKorTimeout() = default;

    /// Whether the time has passed.
    bool IsExpired() const { return GetRemaining() == 0; }

    /// What is left, to hand on to a call that waits.
    /// @return milliseconds, rounded up; 0 only when the time has passed, 0xFFFFFFFF when it never
    ///         passes
    unsigned int GetRemaining() const
    {
        using namespace std::chrono;
        if (m_nMilliseconds == FOREVER)
            return FOREVER;
        const auto oLeft = m_oBegin + milliseconds(m_nMilliseconds) - steady_clock::now();
        const auto nLeft = ceil<milliseconds>(oLeft).count();
        return nLeft > 0 ? static_cast<unsigned int>(nLeft) : 0;
    }

    /// Begins anew, with the same length.
    void Restart() { m_oBegin = std::chrono::steady_clock::now(); }

protected:
    static constexpr unsigned int FOREVER = 0xFFFFFFFF; ///< Never passes.

    unsigned int m_nMilliseconds;                   ///< The length.
    std::chrono::steady_clock::time_point m_oBegin; ///< When it began.
};

/// Measures how long something takes.
///
/// An object serves one thread at a time; any number of threads may ask it at once.
class CKorStopwatch
{
public:
    /// Begins now.
    CKorStopwatch() : m_oBegin(std::chrono::steady_clock::now()) {}
    CKorStopwatch(const CKorStopwatch&) = delete;
    CKorStopwatch& operator=(const CKorStopwatch&) = delete;
    virtual ~CKorStopwatch() = default;

    /// Begins anew.
    void Restart() { m_oBegin = std::chrono::steady_clock::now(); }

    /// The time since it began, which is never negative.
    CKorTimeDiff GetElapsed() const
    {
        using CTicks = std::chrono::duration<long long, std::ratio<1, 100000000>>;
        const auto oElapsed = std::chrono::steady_clock::now() - m_oBegin;
        CKorTimeDiff oSpan;
        oSpan.SetTimeDiff(std::chrono::duration_cast<CTicks>(oElapsed).count(), true);
        return oSpan;
    }

protected:
    std::chrono::steady_clock::time_point m_oBegin; ///< When it began.
};

/// @}
