#pragma once

/// @file
/// Spans of time.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#negative-spans-read-as-huge

#include "KorExport.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <sys/time.h>

/// @addtogroup instants
/// @{

/// A span of time: a signed 64-bit count of ticks of 10 ns.
///
/// A tick is the smallest step: 100 ticks are a microsecond, 100,000,000 a second and
/// 8,640,000,000,000 a day, so a span reaches about 2,900 years either way. Sums and products
/// that leave this range wrap.
///
/// A new program takes this class for spans, and KorToIsoDuration() and KorFromIsoDuration() for
/// texts of them that read back also when the span is negative.
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

    /// Text formats. H stands for all hours of the span, D for its days; mm, ss, mmm, uuu and nnn
    /// are minutes, seconds, milli-, micro- and nanoseconds in 2 or 3 digits. A negative span is
    /// written with "-" in front; H and D are then those of the unsigned tick count and very
    /// large, and the text does not read back.
    enum EDiffFormat : int
    {
        eDiffMilliSeconds = 0, ///< total milliseconds, `3723500`
        eDiffHhMm = 1,         ///< H:mm, `1:02`
        eDiffHhMmSs = 2,       ///< H:mm:ss, `1:02:03`
        eDiffHhMmSsMs = 3,     ///< H:mm:ss.mmm, `1:02:03.500`
        eDiffHhMmSsMsUs = 4,   ///< H:mm:ss.mmm.uuu, `1:02:03.500.000`; for writing only
        eDiffHhMmSsMsUsNs = 5, ///< H:mm:ss.mmm.uuu.nnn; for writing only
        eDiffDaysHhMmSs = 6,   ///< D#hh:mm:ss with hh all hours of the span, `1#26:00:00`
        eDiffMicroSeconds = 7  ///< total microseconds, `3723500000`
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

    /// GetTotalMicroSeconds() as seconds and microseconds. Seconds beyond the platform's `time_t`
    /// wrap.
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

    /// Sets the format in which a stream writes and reads spans from now on; #eDiffMilliSeconds
    /// holds for a stream that was never given one. May be called from any thread.
    /// @return the stream
    static std::ios_base& SetDiffTimeFlag(std::ios_base& oStream, EDiffFormat eFormat);

    /// Writes the span in the stream's format, each field as the stream's own operator writes an
    /// unsigned number. The fill character of the stream is '0' after a format with fields of
    /// fixed width. An unknown format writes `Fehler `.
    /// @return the stream
    std::ostream& PutStream(std::ostream& oStream) const;

    /// Reads the span in the stream's format: totals like any integer; the other formats without
    /// white space and sign, hours of at most 2 digits and days of at most 4. A missing separator
    /// sets the stream's fail bit; a missing field reads as 0. Formats that are for writing only,
    /// and unknown ones, read nothing and give the empty span.
    /// @return the stream
    std::istream& GetStream(std::istream& oStream);

    /// Replaces @p strText by the number of ticks of 10 ns.
    void Time2Str(std::string& strText) const;

    /// The span as text: what PutStream() writes to a new string stream.
    friend TARVO_EXT_API std::string KorToString(const CKorTimeDiff& oSpan, EDiffFormat eFormat);

protected:
    friend class CKorUTCTime; // keeps its instant as a span and reads the ticks

    /// Index of the streams' format words, -1 until the first SetDiffTimeFlag().
    static int m_nTimeDiffFlagIdx;

    /// The span in ticks of 10 ns. Mutable for the const assignment.
    mutable std::int64_t m_nValue;
};

/// Whether both spans have the same number of ticks.
TARVO_EXT_API bool operator==(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight);

/// Whether the spans differ.
TARVO_EXT_API bool operator!=(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight);

/// The span @p nFactor times.
TARVO_EXT_API CKorTimeDiff operator*(unsigned long long nFactor, const CKorTimeDiff& oSpan);

/// Writes a span in the stream's format.
/// @return the stream
TARVO_EXT_API std::ostream& operator<<(std::ostream& oStream, const CKorTimeDiff& oSpan);

/// Reads a span in the stream's format.
/// @return the stream
TARVO_EXT_API std::istream& operator>>(std::istream& oStream, CKorTimeDiff& oSpan);

/// The span as text: what PutStream() writes to a new string stream.
TARVO_EXT_API std::string KorToString(const CKorTimeDiff& oSpan, CKorTimeDiff::EDiffFormat eFormat);

/// Reads a span from a text; what follows the span in the text is ignored.
/// @param[out] oSpan  receives what could be read, also when the result is false
/// @param eFormat     the text's format
/// @param strText     the text
/// @return false when a separator or the number of a total is missing
TARVO_EXT_API bool KorFromString(CKorTimeDiff& oSpan, CKorTimeDiff::EDiffFormat eFormat,
                                 const std::string& strText);

namespace std
{

/// Hash of a span, for unordered containers.
template <>
struct hash<CKorTimeDiff>
{
    /// Equal for equal spans.
    std::size_t operator()(const CKorTimeDiff& oSpan) const
    {
        const auto nBits = static_cast<std::uint64_t>(oSpan.GetTotalNanoSeconds());
        return static_cast<std::size_t>(nBits ^ nBits >> 32); // both halves, on 32-bit boards too
    }
};

} // namespace std

/// @}
