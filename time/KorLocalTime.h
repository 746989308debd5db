#pragma once

/// @file
/// Instants read in a time zone.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#time

#include "KorExport.h"
#include "time/KorUTCTime.h"

#include <cstdint>

/// @addtogroup zones
/// @{

/// An instant with its calendar date and clock time in a zone of whole hours.
///
/// Stored is the UTC instant; what calendar queries and comparisons see is the local clock: UTC
/// plus the zone.
///
/// A zone beyond 596 hours wraps when the clock is read: its milliseconds have 32 bits.
///
/// The zone is a number that stays as it is: there are no half hours and no summer time but what
/// was added to the number. Spans between local times, which subtract what the clocks show, are an
/// hour off across a change of summer time when the zone was changed with it. A new program takes
/// CKorZoneTime, which knows the zone of each instant to the minute.
///
/// Beware of the base class: AddTime(), SubTime(), CutOffParts(), SetDate(), reading from a stream
/// and the base's operator+=() and operator-=() store a local clock reading as UTC, so each call
/// moves the time by its zone. The operators of this class do not.
///
///     CKorLocalTime oTime(5, 3, 2024, 10, 0, 0, 0, 2); // 10:00 on a clock two hours ahead
///     oTime.ChangeTimezone(3);                         // the same instant: 11:00
///     oTime.AdjustTimezone(2);                         // 11:00 there: an hour later
class TARVO_EXT_API CKorLocalTime : public CKorUTCTime
{
public:
    /// The first of January of year 0 in zone 0, not valid. Does not read the clock.
    CKorLocalTime();

    /// The local time @p nMilliSeconds milliseconds after the first of January of year 0. Its
    /// valid flag is *false*.
    CKorLocalTime(long long nMilliSeconds, int nTimeZone);

    /// A local time read from a text as by CKorUTCTime::SetDate(), valid as that does it.
    CKorLocalTime(const std::string& strText, ETimeFormat eFormat, int nTimeZone);

    /// A time of local parts, clamped and valid as CKorUTCTime::SetDate() does it.
    CKorLocalTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour, unsigned nMinute,
                  unsigned nSecond, unsigned nMilliSecond, unsigned nMicroSecond,
                  unsigned nNanoSecond, int nTimeZone);

    /// The same without microseconds and nanoseconds.
    CKorLocalTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour, unsigned nMinute,
                  unsigned nSecond, unsigned nMilliSecond, int nTimeZone);

    /// Copies instant, valid flag and zone.
    CKorLocalTime(const CKorLocalTime& oOther) = default;
    /// Copies instant, valid flag and zone.
    CKorLocalTime& operator=(const CKorLocalTime& oOther) = default;

    /// Destroys the time.
    ~CKorLocalTime() override;

    /// Local milliseconds since year 0.
    long long GetLocaltime() const override;
    /// Local ticks of 10 ns since year 0.
    long long GetHighResolutionLocaltime() const override;
    /// Sets the time to @p nMilliSeconds *local* milliseconds since year 0, while
    /// SetHighResolutionLocaltime() takes ticks of *UTC*.
    void SetLocaltime(long long nMilliSeconds) override;

    /// The zone in hours, east of Greenwich positive.
    int GetTimezone() const;
    /// Moves to another zone: the instant stays, the local clock changes.
    void ChangeTimezone(int nTimeZone);
    /// Moves to another zone: the local clock stays, down to the millisecond, and the instant
    /// changes.
    void AdjustTimezone(int nTimeZone);
    /// Moves to the system's current zone as with ChangeTimezone().
    /// @return that zone
    int SetTimeZone();

    /// The system's current zone in hours, daylight saving included: what ftime() says, and where
    /// it knows nothing (zone 0 without daylight saving) the C library's zone data. Half hours
    /// are cut toward Greenwich: India's 5:30 is 5. The zone is that of now, and wrong for times of
    /// the other half of the year. May be called from any thread while none changes the environment,
    /// from which the zone data is chosen.
    static int GetCurrentTimezone();

    /// The system clock's instant in milliseconds, in the system's current zone; valid.
    static CKorLocalTime CurrentLocalTime();

    /// Moves the time forward by whole milliseconds; the time's own part below one is dropped.
    CKorLocalTime& operator+=(const CKorTimeDiff& oSpan);
    /// Moves the time back by whole milliseconds; the time's own part below one is dropped.
    CKorLocalTime& operator-=(const CKorTimeDiff& oSpan);
    /// A copy moved forward as by operator+=().
    CKorLocalTime operator+(const CKorTimeDiff& oSpan) const;
    /// A copy moved back as by operator-=().
    CKorLocalTime operator-(const CKorTimeDiff& oSpan) const;

    /// @name Comparisons
    /// They compare what the local clocks show, in milliseconds: the same instant in two zones is
    /// not equal, times within one millisecond are.
    /// @{

    /// Whether this clock shows less.
    bool operator<(const CKorLocalTime& oOther) const;
    /// Whether this clock shows more.
    bool operator>(const CKorLocalTime& oOther) const;
    /// Whether this clock does not show more.
    bool operator<=(const CKorLocalTime& oOther) const;
    /// Whether this clock does not show less.
    bool operator>=(const CKorLocalTime& oOther) const;
    /// @}

    /// The day of the month of the first @p eWeekday of a month.
    /// @return 1 to 7, or 0 when @p eWeekday is no day of the week
    static int CalcFirstWeekdayOfMonth(int nMonth, int nYear, EWeekday eWeekday);

    /// The day of the month of the @p nIndex-th @p eWeekday of a month, counted from 1: the first
    /// one also for a smaller index, the last one for an index beyond the month. The last Sunday
    /// of a month is `CalcDayFromWeek(nMonth, nYear, eSunday, 5)`.
    /// @return the day, or 0 when @p eWeekday is no day of the week
    static int CalcDayFromWeek(int nMonth, int nYear, EWeekday eWeekday, int nIndex);

protected:
    std::int32_t m_nTimeZone; ///< Hours from UTC to local time, east positive.
};

/// Whether both clocks show the same millisecond.
TARVO_EXT_API bool operator==(const CKorLocalTime& oLeft, const CKorLocalTime& oRight);

/// Whether the clocks differ.
TARVO_EXT_API bool operator!=(const CKorLocalTime& oLeft, const CKorLocalTime& oRight);

/// @}
