#pragma once

// Waiting for a line with a time-out and a way to be woken. Not installed.

#include <cstdint>

/// The monotonic clock, in nanoseconds.
std::int64_t KorLineClock();

/// The total of one call's waits. It begins when it is asked for its moment first, so that a call
/// that need not wait does not look at the clock.
class CKorLineDeadline
{
public:
    static constexpr unsigned int WITHOUT_LIMIT = 0xFFFFFFFF;
    static constexpr std::int64_t NEVER = INT64_MAX;
    static constexpr std::int64_t AT_ONCE = 0;

    explicit CKorLineDeadline(unsigned int nTimeout) : m_nTimeout(nTimeout) {}

    /// Whether the call may wait at all.
    bool MayWait() const { return m_nTimeout != 0; }
    /// When it has waited long enough: #AT_ONCE, #NEVER or a reading of the clock.
    std::int64_t Moment();
    /// Whether it has begun and is over.
    bool IsOver() const { return m_nMoment > AT_ONCE && KorLineClock() >= m_nMoment; }

private:
    unsigned int m_nTimeout;
    std::int64_t m_nMoment = AT_ONCE;
};

/// A descriptor that becomes readable when somebody raises it.
class CKorLineWake
{
public:
    CKorLineWake() = default;
    ~CKorLineWake() { Close(); }
    CKorLineWake(const CKorLineWake&) = delete;
    CKorLineWake& operator=(const CKorLineWake&) = delete;

    /// @return 0 or an error number
    int Open();
    void Close();
    void Raise() const;
    void Clear() const;
    int Handle() const { return m_hWake; }

private:
    int m_hWake = -1;
};

/// Waits until the line is ready for the events of poll(), has hung up or @p hWake is readable.
/// @return 0, or EAGAIN when the moment came first
int KorWaitForLine(int hLine, short nEvents, int hWake, std::int64_t nMoment);
