#pragma once

#include "time/KorDigitsDetail.h"
#include "time/KorZoneDataDetail.h"

#include <cstdint>
#include <string>

/// When in a year summer time begins or ends, by the clock that shows until then.
struct SKorZoneDay
{
    enum EKind
    {
        DAY_OF_365,   ///< nDay 1 to 365; 29 February is never counted
        DAY_OF_366,   ///< nDay 0 to 365
        WEEK_OF_MONTH ///< nDay 0 (Sunday) to 6 of week 1 to 5 (the last one) of nMonth
    } eKind;
    int nMonth; ///< 1 to 12
    int nWeek;
    int nDay;
    std::int32_t nSecond; ///< of the day, up to 167 hours before or after its begin
};

/// A zone as POSIX writes it in TZ: "CET-1CEST,M3.5.0,M10.5.0/3".
class CKorZoneRule
{
public:
    /// Reads the text, all of it; hours of a change may have a sign and reach 167. Summer time
    /// without dates is that of the United States.
    /// @return whether it is a rule; when not, this object is of no use
    bool Parse(const std::string& strText);

    bool HasSummerTime() const { return m_bHasSummerTime; }
    const SKorZoneType& Standard() const { return m_oStandard; }
    const SKorZoneType& Summer() const { return m_oSummer; }
    /// The Unix second at which summer time begins in the year.
    std::int64_t SummerBegin(std::int64_t nYear) const;
    /// The Unix second at which summer time ends in the year.
    std::int64_t SummerEnd(std::int64_t nYear) const;

private:
    bool ParseSummerTime(KorDigits::CCursor& oText);

    SKorZoneType m_oStandard = {0, false, ""};
    SKorZoneType m_oSummer = {0, true, ""};
    bool m_bHasSummerTime = false;
    // Without a word: the second Sunday of March and the first one of November, at 2 o'clock.
    SKorZoneDay m_oBegin = {SKorZoneDay::WEEK_OF_MONTH, 3, 2, 0, 7200};
    SKorZoneDay m_oEnd = {SKorZoneDay::WEEK_OF_MONTH, 11, 1, 0, 7200};
};
