#pragma once

/// @file
/// Instants on the calendar.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#time

#include "KorExport.h"
#include "time/KorTimeDiff.h"

#include <cstdint>
#include <iosfwd>
#include <string>

/// @addtogroup instants
/// @{

/// An instant with its calendar date and clock time in UTC.
///
/// The instant is a count of ticks of 10 ns since the first of January of year 0, on the
/// Gregorian calendar extended backwards (year 0 is a leap year). The Unix epoch is day 719,528
/// of this count.
///
/// Input out of range is never refused: it is clamped, and IsTimeValid() says so. Getters answer
/// whether the time is valid or not.
///
/// The unsigned ticks end within 16 July 5845; dates beyond wrap to early ones and are as valid as
/// others. From 8 October 2922 on the ticks are negative as signed numbers: such times are later
/// than all before for "<" and ">", and earlier for "<=" and ">=". Between two times before or two
/// times after that day the comparisons agree.
///
/// A new program takes this class for instants, and beside it KorUnixTime.h to come from other
/// clocks and to go to them, KorIsoTime.h for texts that others wrote or read, and CKorZoneTime for
/// the calendar and the clock of every day and zone.
///
/// For derived classes: every calendar and clock query reads the time through GetLocaltime() and
/// GetHighResolutionLocaltime(); dates, spans and cuts are written through
/// SetHighResolutionLocaltime(). Whoever overrides them shifts the clock that users see. Only the
/// comparisons and the assignment of seconds look at #m_oTime itself.
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

    /// Text formats. Every field is filled with zeros to its width: DD day, MM month, YYYY year,
    /// YY year of the century, hh hour, mm minute, ss second, mmm, uuu and nnn milli-, micro- and
    /// nanoseconds.
    enum ETimeFormat : int
    {
        eDateTimeMs = 0,     ///< DD.MM.YYYY hh:mm:ss.mmm, `05.03.2024 14:07:09.250`
        eDateTime = 1,       ///< DD.MM.YYYY hh:mm:ss, `05.03.2024 14:07:09`
        eDate = 2,           ///< DD.MM.YYYY, `05.03.2024`
        eDateTimeUs = 3,     ///< DD.MM.YYYY hh:mm:ss.mmm.uuu, `05.03.2024 14:07:09.250.125`
        eDateTimeNs = 4,     ///< DD.MM.YYYY hh:mm:ss.mmm.uuu.nnn, `05.03.2024 14:07:09.250.125.990`
        eTime = 5,           ///< hh:mm:ss, `14:07:09`
        eUsDateTime = 6,     ///< MM/DD/YYYY hh:mm:ss, `03/05/2024 14:07:09`
        eUsDate = 7,         ///< MM/DD/YYYY and one space, `03/05/2024 `
        eIsoDate = 8,        ///< YYYY-MM-DD and one space, `2024-03-05 `
        eTimeMs = 9,         ///< hh:mm:ss.mmm, `14:07:09.250`
        eIsoDateTimeMs = 10, ///< YYYY-MM-DD hh:mm:ss.mmm, `2024-03-05 14:07:09.250`; not for
                             ///< texts with "T" or an offset, see GetStream()
        eMailFormat = 11     ///< written by MailFormat(), `5 Mar 24 14:07 +0100`; reads DD MM YY
                             ///< hh:mm:ss, where a YY below 46 is in this century
    };

    /// The elements that formats are made of. A field is written with a fixed width and read with
    /// at most as many digits.
    enum ETimeElement : int
    {
        eElemDay = 0,     ///< day, 2 digits
        eElemMonth = 1,   ///< month, 2 digits
        eElemYear = 2,    ///< year, 4 digits
        eElemYear2 = 3,   ///< year of the century, 2 digits; reads as 1946 to 2045
        eElemHour = 4,    ///< hour, 2 digits
        eElemMinute = 5,  ///< minute, 2 digits
        eElemSecond = 6,  ///< second, 2 digits
        eElemMilli = 7,   ///< millisecond, 3 digits
        eElemMicro = 8,   ///< microsecond, 3 digits
        eElemNano = 9,    ///< nanosecond, 3 digits
        eElemDot = 10,    ///< "."
        eElemSlash = 11,  ///< "/"
        eElemColon = 12,  ///< ":"
        eElemAnySep = 13, ///< writes nothing, reads any one character but a digit
        eElemSpace = 14,  ///< writes one space, reads any white space
        eElemNone = 15,   ///< nothing
        eElemDash = 16    ///< "-"
    };

    /// The first of January of year 0, 00:00, not valid. Does not read the clock.
    CKorUTCTime();

    /// The instant @p nMilliSeconds milliseconds after the first of January of year 0; valid.
    CKorUTCTime(long long nMilliSeconds);

    /// A time as SetDate() makes it of the same parts.
    CKorUTCTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour, unsigned nMinute,
                unsigned nSecond, unsigned nMilliSecond, unsigned nMicroSecond,
                unsigned nNanoSecond);

    /// A time read from a text as by SetDate().
    CKorUTCTime(const std::string& strText, ETimeFormat eFormat);

    /// Copies the instant and the valid flag.
    CKorUTCTime(const CKorUTCTime& oOther) = default;
    /// Copies the instant and the valid flag.
    CKorUTCTime& operator=(const CKorUTCTime& oOther) = default;

    /// Destroys the time.
    virtual ~CKorUTCTime();

    /// Reads the time in the stream's format. Leading white space is skipped; fields may be
    /// shorter than their width and separators missing, and what the format or the text lacks is
    /// 0, so that a time without a date comes out as an invalid one of year 0. Whether the text
    /// made sense shows in IsTimeValid(). But what reads as 0 may make sense: a "T" between date
    /// and clock ends the reading of digits, so `2024-03-05T14:07:09` is a *valid* midnight, a
    /// fraction of one digit counts milliseconds, and an offset or any other text behind the format
    /// is left unread; KorFromIsoString() is for such texts. Reading on after the end of the input
    /// fails the stream: its fail bit alone is set then, and the time is not valid. An unknown
    /// format reads nothing but leading white space and leaves the time as it is.
    /// @return the stream
    virtual std::istream& GetStream(std::istream& oStream);

    /// Writes the time in the stream's format, each field as the stream's own operator writes an
    /// int with the field's width and the fill character '0', which the stream keeps. An unknown
    /// format writes nothing.
    /// @return the stream
    virtual std::ostream& PutStream(std::ostream& oStream) const;

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

    int GetHour() const;        ///< Hour, 0 to 23.
    int GetMinute() const;      ///< Minute, 0 to 59.
    int GetSecond() const;      ///< Second, 0 to 59.
    int GetMilliSecond() const; ///< Millisecond of the second, 0 to 999.
    int GetMicroSecond() const; ///< Microsecond of the millisecond, 0 to 999.
    int GetNanoSecond() const;  ///< Nanosecond of the microsecond, 0 to 990, a multiple of 10.
    long long GetTotalMilliseconds() const; ///< Milliseconds since year 0.
    long long GetTotalMicroseconds() const; ///< Microseconds since year 0.
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

    int GetDay() const;          ///< Day of the month as in CalcDate().
    int GetMonth() const;        ///< Month as in CalcDate().
    int GetYear() const;         ///< Year as in CalcDate().
    int GetTotalMonths() const;  ///< Year * 12 + month.
    EWeekday GetWeekDay() const; ///< Day of the week of the date of CalcDate().
    /// @}

    /// Sets date and time. Parts out of range are clamped to the nearest possible value, and the
    /// time becomes invalid then; otherwise valid. Nanoseconds are cut to whole tens.
    ///
    /// Any year counts as possible. From 16 July 5845 on the date does not fit into the ticks, and
    /// the time is another, valid one.
    void SetDate(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour, unsigned nMinute,
                 unsigned nSecond, unsigned nMilliSecond, unsigned nMicroSecond,
                 unsigned nNanoSecond);

    /// Sets the time to what GetStream() reads from the text in this format; whether that made
    /// sense shows in IsTimeValid(). A text that ends before its format does gives an invalid time.
    void SetDate(const std::string& strText, ETimeFormat eFormat);

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

    bool operator==(const CKorUTCTime& oOther) const; ///< Whether both are the same instant.
    bool operator!=(const CKorUTCTime& oOther) const; ///< Whether the instants differ.
    bool operator<(const CKorUTCTime& oOther) const;  ///< Whether this instant is earlier.
    bool operator<=(const CKorUTCTime& oOther) const; ///< Whether this instant is not later.
    bool operator>(const CKorUTCTime& oOther) const;  ///< Whether this instant is later.
    bool operator>=(const CKorUTCTime& oOther) const; ///< Whether this instant is not earlier.
    /// @}

    /// The span since 1970-01-01 00:00 on the clock of this class, in seconds and microseconds;
    /// meaningless for an earlier time. On a board with 32-bit `time_t` it wraps in 2038.
    timeval GetTimeval() const;

    /// Sets the format in which a stream writes and reads times from now on; #eDateTimeMs holds
    /// for a stream that was never given one. May be called from any thread.
    /// @return the stream
    static std::ios_base& SetTimeFlag(std::ios_base& oStream, ETimeFormat eFormat);

    /// Writes the form of mail headers, such as `1 Jan 24 09:05 +0100`, and flushes the stream.
    /// The zone is always "+0100".
    /// @return the stream
    std::ostream& MailFormat(std::ostream& oStream) const;

    /// The time as text: what operator<<() writes to a new string stream in this format.
    std::string Time2Str(ETimeFormat eFormat) const;

protected:
    /// Index of the streams' format words, -1 until the first SetTimeFlag().
    static int m_nFormatIdx;
    /// The elements of each format, indexed by #ETimeFormat.
    static const std::int32_t m_aoFormatTable[12][17];

    CKorTimeDiff m_oTime; ///< The instant: the span since the first of January of year 0.
    bool m_bValid;        ///< What IsTimeValid() reports.

private:
    friend TARVO_EXT_API bool KorFromString(CKorUTCTime& oTime, ETimeFormat eFormat,
                                            const std::string& strText);

    /// Reads a record of the format table and sets date and time.
    template <class TSource>
    TARVO_EXT_LOCAL void ReadRecord(TSource& oSource, long nFormat);
    /// What GetStream() of this class reads from a text.
    /// @return whether reading did not fail
    TARVO_EXT_LOCAL bool ReadText(const char* pBegin, const char* pEnd, ETimeFormat eFormat);
    /// The same for what GetStream() of the object's class reads.
    TARVO_EXT_LOCAL bool ReadAnyText(const char* pBegin, const char* pEnd, ETimeFormat eFormat);
};

/// The span from @p oRight to @p oLeft, which must not be the earlier one: the span is then large
/// and meaningless, not negative.
///
/// It is the difference of what the two clocks show. Of local times in different zones, such as
/// one in summer and one in winter, it is off by the difference of the zones: take both through
/// CKorZoneTime or in one zone.
TARVO_EXT_API CKorTimeDiff operator-(const CKorUTCTime& oLeft, const CKorUTCTime& oRight);

/// Writes a time in the stream's format.
/// @return the stream
TARVO_EXT_API std::ostream& operator<<(std::ostream& oStream, const CKorUTCTime& oTime);

/// Reads a time in the stream's format.
/// @return the stream
TARVO_EXT_API std::istream& operator>>(std::istream& oStream, CKorUTCTime& oTime);

/// The time as text: the same as CKorUTCTime::Time2Str().
TARVO_EXT_API std::string KorToString(const CKorUTCTime& oTime, CKorUTCTime::ETimeFormat eFormat);

/// Reads a time from a text. Unlike CKorUTCTime::SetDate(), it takes the fields behind the end of
/// the text as 0.
/// @return always true: whether the text made sense shows in CKorUTCTime::IsTimeValid()
TARVO_EXT_API bool KorFromString(CKorUTCTime& oTime, CKorUTCTime::ETimeFormat eFormat,
                                 const std::string& strText);

namespace std
{

/// Hash of an instant, for unordered containers. There is none for CKorLocalTime: its equality
/// compares clocks.
template <>
struct hash<CKorUTCTime>
{
    /// Equal for equal instants, whatever the valid flags and the clock of a derived class say.
    std::size_t operator()(const CKorUTCTime& oTime) const
    {
        const auto nBits =
            static_cast<std::uint64_t>(oTime.CKorUTCTime::GetHighResolutionLocaltime());
        return static_cast<std::size_t>(nBits ^ nBits >> 32); // both halves, on 32-bit boards too
    }
};

} // namespace std

/// @}
