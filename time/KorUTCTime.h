#pragma once

/// @file
/// Instants on the calendar.

#include "KorExport.h"
#include "time/KorTimeDiff.h"

/// An instant with its calendar date and clock time in UTC.
///
/// The instant is a count of ticks of 10 ns since the first of January of year 0, on the
/// Gregorian calendar extended backwards (year 0 is a leap year). The Unix epoch is day 719,528
/// of this count.
///
/// Input out of range is never refused: it is clamped, and IsTimeValid() says so. Getters answer
/// whether the time is valid or not.
///
/// For derived classes: every calendar and clock query reads the time through GetLocaltime() and
/// GetHighResolutionLocaltime() and everything that changes it writes through
/// SetHighResolutionLocaltime(); whoever overrides them shifts the clock that users see. Only the
/// comparisons look at #m_oTime itself.
///
/// Times are plain values without locks: one object must not be changed by one thread while
/// another uses it, different objects are independent.
///
///     CKorUTCTime oTime(5, 3, 2024, 14, 7, 9, 250, 0, 0);
///     oTime.AddTime(1, 0, 0, 0, 0, 0, 0);         // 6 March 2024, 14:07:09.250
///     oTime.CutOffParts(CKorUTCTime::ePartMonth); // 1 March 2024, 00:00
class TARVO_EXT_API CKorUTCTime
{
public:
    /// What CutOffParts() keeps. Counts from 1, unlike CKorTimeDiff::ETimeDiffPart.
    enum ETimePart : int
    {
        ePartYear = 1,   ///< the first of January of the year, 00:00
        ePartMonth = 2,  ///< the first of the month, 00:00
        ePartDay = 3,    ///< the day, 00:00
        ePartHour = 4,   ///< the full hour
        ePartMinute = 5, ///< the full minute
        ePartSecond = 6  ///< the full second
    };

    /// Days of the week. The numbering begins on Tuesday, which is wanted.
    enum EWeekday : int
    {
        eTuesday = 0,   ///< Tuesday
        eWednesday = 1, ///< Wednesday
        eThursday = 2,  ///< Thursday
        eFriday = 3,    ///< Friday
        eSaturday = 4,  ///< Saturday
        eSunday = 5,    ///< Sunday
        eMonday = 6     ///< Monday
    };

    /// The first of January of year 0, 00:00, not valid. Does not read the clock.
    CKorUTCTime();

    /// The instant @p nMilliSeconds milliseconds after the first of January of year 0; valid.
    CKorUTCTime(long long nMilliSeconds);

    /// A time as SetDate() makes it of the same parts.
    CKorUTCTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour, unsigned nMinute,
                unsigned nSecond, unsigned nMilliSecond, unsigned nMicroSecond,
                unsigned nNanoSecond);

    /// Copies the instant and the valid flag.
    CKorUTCTime(const CKorUTCTime& oOther) = default;
    /// Copies the instant and the valid flag.
    CKorUTCTime& operator=(const CKorUTCTime& oOther) = default;

    /// Destroys the time.
    virtual ~CKorUTCTime();

    /// Milliseconds since year 0 on the clock of this class: cut to whole ones, unsigned division.
    virtual long long GetLocaltime() const;
    /// Ticks of 10 ns since year 0 on the clock of this class.
    virtual long long GetHighResolutionLocaltime() const;
    /// Sets the time to @p nMilliSeconds milliseconds since year 0; the valid flag stays.
    virtual void SetLocaltime(long long nMilliSeconds);
    /// Sets the time to @p nTicks ticks of 10 ns since year 0; the valid flag stays.
    virtual void SetHighResolutionLocaltime(long long nTicks);

    /// Sets the time to the Unix epoch plus @p nSeconds * 1000 *ticks*, valid: one second moves
    /// the time by 10 microseconds. The product wraps to 32 bits.
    CKorUTCTime& operator=(long nSeconds);

    /// The system clock's instant in microseconds. Its valid flag is *false*. May be called from
    /// any thread.
    static CKorUTCTime CurrentTime();

    /// Always true.
    bool IsClassValid() const;
    /// Whether the time was made of parts that were all in range, or of a raw count.
    bool IsTimeValid() const;

    /// @name Clock fields
    /// @{

    /// Hour, 0 to 23.
    int GetHour() const;
    /// Minute, 0 to 59.
    int GetMinute() const;
    /// Second, 0 to 59.
    int GetSecond() const;
    /// Millisecond of the second, 0 to 999.
    int GetMilliSecond() const;
    /// Microsecond of the millisecond, 0 to 999.
    int GetMicroSecond() const;
    /// Nanosecond of the microsecond, 0 to 990, always a multiple of 10.
    int GetNanoSecond() const;
    /// Milliseconds since year 0.
    long long GetTotalMilliseconds() const;
    /// Microseconds since year 0.
    long long GetTotalMicroseconds() const;
    /// @}

    /// @name Calendar
    /// @{

    /// Whether February of @p nYear has 29 days.
    static bool IsLeapYear(int nYear);
    /// The number of leap years from year 0 up to, not including, @p nYear. A negative year
    /// counts like its absolute value.
    static int NumOfLeapYearsUntilYear(int nYear);
    /// The length of a month in days; 0 for a month outside 1 to 12.
    static int GetNumOfDaysPerMonth(int nYear, int nMonth);
    /// The number of a day, counted from 0 on the first of January of year 0. The day may exceed
    /// its month; months outside 1 to 12 count as January or as the end of the year.
    static int CalcNumOfDays(int nYear, int nMonth, int nDay);

    /// The date. The first of January of a year divisible by 400 reads as that of year 0, all day
    /// long; this is wanted, and everything that reads a date inherits it.
    /// @param[out] nYear   year
    /// @param[out] nMonth  month, 1 to 12
    /// @param[out] nDay    day of the month, from 1
    void CalcDate(int& nYear, int& nMonth, int& nDay) const;

    /// Day of the month as in CalcDate().
    int GetDay() const;
    /// Month as in CalcDate().
    int GetMonth() const;
    /// Year as in CalcDate().
    int GetYear() const;
    /// Year * 12 + month.
    int GetTotalMonths() const;
    /// Day of the week of the date of CalcDate().
    EWeekday GetWeekDay() const;
    /// @}

    /// Sets date and time. Parts out of range are clamped to the nearest possible value, and the
    /// time becomes invalid then; otherwise valid. Nanoseconds are cut to whole tens.
    void SetDate(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour, unsigned nMinute,
                 unsigned nSecond, unsigned nMilliSecond, unsigned nMicroSecond,
                 unsigned nNanoSecond);

    /// Moves the time forward by the sum of the parts, which may exceed their units. The time
    /// becomes invalid when it does not grow: by an overflow, or because all parts are 0.
    void AddTime(unsigned nDays, unsigned nHours, unsigned nMinutes, unsigned nSeconds,
                 unsigned nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds);
    /// Moves the time back; it becomes invalid when it does not shrink.
    void SubTime(unsigned nDays, unsigned nHours, unsigned nMinutes, unsigned nSeconds,
                 unsigned nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds);

    /// Cuts the time to a unit; the valid flag stays.
    /// @param ePart  the unit; a value that is no enumerator leaves the time as it is
    void CutOffParts(ETimePart ePart);

    /// Moves the time forward by a span of at most 292 years; the valid flag stays.
    CKorUTCTime& operator+=(const CKorTimeDiff& oSpan);
    /// Moves the time back by a span of at most 292 years; the valid flag stays.
    CKorUTCTime& operator-=(const CKorTimeDiff& oSpan);
    /// The time moved forward by a span of at most 292 years. Its valid flag is *false*.
    CKorUTCTime operator+(const CKorTimeDiff& oSpan) const;
    /// The time moved back by a span of at most 292 years. Its valid flag is *false*.
    CKorUTCTime operator-(const CKorTimeDiff& oSpan) const;

    /// @name Comparisons
    /// They compare the instants, whatever the valid flags and the clock of a derived class say.
    /// @{

    /// Whether both are the same instant.
    bool operator==(const CKorUTCTime& oOther) const;
    /// Whether the instants differ.
    bool operator!=(const CKorUTCTime& oOther) const;
    /// Whether this instant is earlier.
    bool operator<(const CKorUTCTime& oOther) const;
    /// Whether this instant is not later.
    bool operator<=(const CKorUTCTime& oOther) const;
    /// Whether this instant is later.
    bool operator>(const CKorUTCTime& oOther) const;
    /// Whether this instant is not earlier.
    bool operator>=(const CKorUTCTime& oOther) const;
    /// @}

    /// The span since 1970-01-01 00:00 on the clock of this class, in seconds and microseconds;
    /// meaningless for an earlier time.
    timeval GetTimeval() const;

protected:
    CKorTimeDiff m_oTime; ///< The instant: the span since the first of January of year 0.
    bool m_bValid;        ///< What IsTimeValid() reports.
};

/// The span from @p oRight to @p oLeft, which must not be the earlier one: the span is then large
/// and meaningless, not negative.
TARVO_EXT_API CKorTimeDiff operator-(const CKorUTCTime& oLeft, const CKorUTCTime& oRight);
