#pragma once

/// @file
/// Spans of time.

#include "KorExport.h"

#include <cstdint>
#include <sys/time.h>

/// A span of time: a signed 64-bit count of ticks of 10 ns.
///
/// A tick is the smallest step: 100 ticks are a microsecond, 100,000,000 a second and
/// 8,640,000,000,000 a day, so a span reaches about 2,900 years either way. Sums and products
/// that leave this range wrap.
///
/// Spans are plain values without locks: one object must not be changed by one thread while
/// another uses it, different objects are independent.
///
///     CKorTimeDiff oSpan(0, 1, 2, 3, 500, 0, 0);     // 1 h 2 min 3.5 s
///     oSpan.GetTotalMilliSeconds();                  // 3723500
///     oSpan.CutOffParts(CKorTimeDiff::eDiffMinutes); // 1 h 2 min
class TARVO_EXT_API CKorTimeDiff
{
public:
    /// What CutOffParts() keeps. Counts from 0, unlike CKorUTCTime::ETimePart.
    enum ETimeDiffPart : int
    {
        eDiffDays = 0,    ///< whole days
        eDiffHours = 1,   ///< whole hours
        eDiffMinutes = 2, ///< whole minutes
        eDiffSeconds = 3  ///< whole seconds
    };

    /// The empty span.
    CKorTimeDiff();

    /// A span of @p nMilliSeconds milliseconds.
    CKorTimeDiff(long long nMilliSeconds);

    /// A span of the sum of the parts, which may exceed their units. Nanoseconds count in whole
    /// tens: 19 ns are one tick.
    CKorTimeDiff(long long nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds);

    /// A span as SetTime() makes it of the same parts.
    CKorTimeDiff(int nDays, int nHours, int nMinutes, int nSeconds, int nMilliSeconds,
                 int nMicroSeconds, int nNanoSeconds);

    /// Copies the span.
    CKorTimeDiff(const CKorTimeDiff& oOther) = default;

    /// Copies the span, also into a constant object: assignment is a const operation here, and it
    /// assigns.
    const CKorTimeDiff& operator=(const CKorTimeDiff& oOther) const;

    /// Sets the span.
    /// @param nValue          the new length
    /// @param bHighResolution true: @p nValue counts ticks of 10 ns; false: milliseconds
    void SetTimeDiff(long long nValue, bool bHighResolution);

    /// Sets the span to the sum of the parts. Each may be negative and may exceed its unit;
    /// nanoseconds are cut to whole tens toward zero.
    void SetTime(int nDays, int nHours, int nMinutes, int nSeconds, int nMilliSeconds,
                 int nMicroSeconds, int nNanoSeconds);

    /// @name Totals
    /// The whole span in one unit, cut to whole numbers. The divisions are unsigned ones: a
    /// negative span gives a large meaningless total, except in nanoseconds.
    /// @{

    /// Whole days.
    long long GetTotalDays() const;
    /// Whole hours.
    long long GetTotalHours() const;
    /// Whole minutes.
    long long GetTotalMinutes() const;
    /// Whole seconds.
    long long GetTotalSeconds() const;
    /// Whole milliseconds.
    long long GetTotalMilliSeconds() const;
    /// Whole microseconds.
    long long GetTotalMicroSeconds() const;
    /// Nanoseconds, negative for a negative span; wraps for a span of more than 292 years.
    long long GetTotalNanoSeconds() const;
    /// @}

    /// GetTotalMicroSeconds() as seconds and microseconds.
    timeval GetTimeval() const;

    /// The sum.
    CKorTimeDiff operator+(const CKorTimeDiff& oOther) const;
    /// The difference, which may be negative.
    CKorTimeDiff operator-(const CKorTimeDiff& oOther) const;
    /// Adds a span.
    CKorTimeDiff& operator+=(const CKorTimeDiff& oOther);
    /// Subtracts a span.
    CKorTimeDiff& operator-=(const CKorTimeDiff& oOther);
    /// The span @p nFactor times.
    CKorTimeDiff operator*(const unsigned long long& nFactor) const;
    /// Multiplies the span.
    CKorTimeDiff& operator*=(const unsigned long long& nFactor);
    /// The span divided by @p nDivisor, an unsigned division of the ticks: the quotient of a
    /// negative span is meaningless. The span itself when @p nDivisor is 0.
    CKorTimeDiff operator/(const unsigned long long& nDivisor) const;
    /// Divides the span like operator/(); a divisor of 0 changes nothing.
    CKorTimeDiff& operator/=(const unsigned long long& nDivisor);

    /// @name Comparisons
    /// "<" and ">" compare the ticks as unsigned numbers, so that a negative span is greater than
    /// every positive one; "<=" and ">=" compare them as signed numbers. They agree on spans that
    /// are not negative.
    /// @{

    /// Unsigned comparison.
    bool operator<(const CKorTimeDiff& oOther) const;
    /// Unsigned comparison.
    bool operator>(const CKorTimeDiff& oOther) const;
    /// Signed comparison.
    bool operator<=(const CKorTimeDiff& oOther) const;
    /// Signed comparison.
    bool operator>=(const CKorTimeDiff& oOther) const;
    /// Whether both spans have the same number of ticks.
    friend TARVO_EXT_API bool operator==(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight);
    /// Whether the spans differ.
    friend TARVO_EXT_API bool operator!=(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight);
    /// @}

    /// Cuts the span to whole units, by unsigned division.
    /// @param ePart  the unit; a value that is no enumerator leaves the span as it is
    void CutOffParts(ETimeDiffPart ePart);

protected:
    friend class CKorUTCTime; // keeps its instant as a span and reads the ticks

    /// The span in ticks of 10 ns. Mutable for the const assignment.
    mutable std::int64_t m_nValue;
};

/// Whether both spans have the same number of ticks.
TARVO_EXT_API bool operator==(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight);

/// Whether the spans differ.
TARVO_EXT_API bool operator!=(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight);

/// The span @p nFactor times.
TARVO_EXT_API CKorTimeDiff operator*(unsigned long long nFactor, const CKorTimeDiff& oSpan);
