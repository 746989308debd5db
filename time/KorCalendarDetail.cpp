#include "time/KorCalendarDetail.h"

KorCalendar::SDate KorCalendar::DateOfDay(std::int64_t nDay)
{
    const std::int64_t nEra = FloorQuotient(nDay, DAYS_PER_ERA);
    const auto oDate = DateOfDay32(static_cast<std::uint32_t>(FloorRest(nDay, DAYS_PER_ERA)));
    return {nEra * YEARS_PER_ERA + oDate.nYear, oDate.nMonth, oDate.nDay};
}
