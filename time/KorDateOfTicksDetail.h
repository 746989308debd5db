#pragma once

#include "time/KorCalendarDetail.h"
#include "time/KorTimeTicksDetail.h"

/// The date that CKorUTCTime reads from its ticks.
inline KorCalendar::SDate32 KorDateOfTicks(long long nTicks)
{
    // At most 2,135,039: every count of ticks leads to a day of the years 0 to 5845.
    const auto nDay = static_cast<std::uint32_t>(KorTicks::Bits(nTicks) / KorTicks::PER_DAY);
    KorCalendar::SDate32 oDate = KorCalendar::DateOfDay32(nDay);
    if (nDay % KorCalendar::DAYS_PER_ERA == 0)
        oDate.nYear = 0; // wanted: the first day of an era reads as that of year 0
    return oDate;
}
