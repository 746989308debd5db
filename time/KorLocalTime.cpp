#include "time/KorLocalTime.h"

#include "time/KorSystemZoneDetail.h"
#include "time/KorTimeTicksDetail.h"

using KorTicks::Bits;
using KorTicks::Signed;

namespace
{

/// A zone in milliseconds: a product that wraps to 32 bits.
std::uint64_t ZoneMilliSeconds(std::int32_t nTimeZone)
{
    return Bits(static_cast<std::int32_t>(static_cast<std::uint32_t>(nTimeZone) * 3600000U));
}

} // namespace

CKorLocalTime::CKorLocalTime() : m_nTimeZone(0) {}

CKorLocalTime::CKorLocalTime(long long nMilliSeconds, int nTimeZone) : m_nTimeZone(nTimeZone)
{
    CKorLocalTime::SetLocaltime(nMilliSeconds);
}

CKorLocalTime::CKorLocalTime(const std::string& strText, ETimeFormat eFormat, int nTimeZone)
    : CKorUTCTime(strText, eFormat), m_nTimeZone(nTimeZone)
{
    m_oTime -= CKorTimeDiff(0, nTimeZone, 0, 0, 0, 0, 0);
}

CKorLocalTime::CKorLocalTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                             unsigned nMinute, unsigned nSecond, unsigned nMilliSecond,
                             unsigned nMicroSecond, unsigned nNanoSecond, int nTimeZone)
    : CKorUTCTime(nDay, nMonth, nYear, nHour, nMinute, nSecond, nMilliSecond, nMicroSecond,
                  nNanoSecond),
      m_nTimeZone(nTimeZone)
{
    m_oTime -= CKorTimeDiff(0, nTimeZone, 0, 0, 0, 0, 0);
}

CKorLocalTime::CKorLocalTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                             unsigned nMinute, unsigned nSecond, unsigned nMilliSecond,
                             int nTimeZone)
    : CKorLocalTime(nDay, nMonth, nYear, nHour, nMinute, nSecond, nMilliSecond, 0, 0, nTimeZone)
{
}

CKorLocalTime::~CKorLocalTime() = default;

long long CKorLocalTime::GetLocaltime() const
{
    return Signed(Bits(CKorUTCTime::GetLocaltime()) + ZoneMilliSeconds(m_nTimeZone));
}

long long CKorLocalTime::GetHighResolutionLocaltime() const
{
    return Signed(Bits(CKorUTCTime::GetHighResolutionLocaltime()) +
                  ZoneMilliSeconds(m_nTimeZone) * KorTicks::PER_MILLISECOND);
}

// Wanted: SetHighResolutionLocaltime() has no such counterpart and stores UTC.
void CKorLocalTime::SetLocaltime(long long nMilliSeconds)
{
    CKorUTCTime::SetLocaltime(Signed(Bits(nMilliSeconds) - ZoneMilliSeconds(m_nTimeZone)));
}

int CKorLocalTime::GetTimezone() const
{
    return m_nTimeZone;
}

void CKorLocalTime::ChangeTimezone(int nTimeZone)
{
    m_nTimeZone = nTimeZone;
}

void CKorLocalTime::AdjustTimezone(int nTimeZone)
{
    const long long nMilliSeconds = GetLocaltime();
    ChangeTimezone(nTimeZone);
    SetLocaltime(nMilliSeconds);
}

int CKorLocalTime::SetTimeZone()
{
    m_nTimeZone = GetCurrentTimezone();
    return m_nTimeZone;
}

int CKorLocalTime::GetCurrentTimezone()
{
    const SKorSystemZone oZone = KorSystemZone();
    return -(oZone.nMinutesWest / 60) + (oZone.bDaylight ? 1 : 0);
}

CKorLocalTime CKorLocalTime::CurrentLocalTime()
{
    const CKorUTCTime oNow = CKorUTCTime::CurrentTime();
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    oNow.CalcDate(nYear, nMonth, nDay);
    CKorLocalTime oTime(
        static_cast<unsigned>(nDay), static_cast<unsigned>(nMonth), static_cast<unsigned>(nYear),
        static_cast<unsigned>(oNow.GetHour()), static_cast<unsigned>(oNow.GetMinute()),
        static_cast<unsigned>(oNow.GetSecond()), static_cast<unsigned>(oNow.GetMilliSecond()), 0);
    oTime.ChangeTimezone(GetCurrentTimezone());
    return oTime;
}

CKorLocalTime& CKorLocalTime::operator+=(const CKorTimeDiff& oSpan)
{
    SetLocaltime(Signed(Bits(GetLocaltime()) + Bits(oSpan.GetTotalMilliSeconds())));
    return *this;
}

CKorLocalTime& CKorLocalTime::operator-=(const CKorTimeDiff& oSpan)
{
    SetLocaltime(Signed(Bits(GetLocaltime()) - Bits(oSpan.GetTotalMilliSeconds())));
    return *this;
}

CKorLocalTime CKorLocalTime::operator+(const CKorTimeDiff& oSpan) const
{
    return CKorLocalTime(*this) += oSpan;
}

CKorLocalTime CKorLocalTime::operator-(const CKorTimeDiff& oSpan) const
{
    return CKorLocalTime(*this) -= oSpan;
}

bool CKorLocalTime::operator<(const CKorLocalTime& oOther) const
{
    return GetLocaltime() < oOther.GetLocaltime();
}

bool CKorLocalTime::operator>(const CKorLocalTime& oOther) const
{
    return GetLocaltime() > oOther.GetLocaltime();
}

bool CKorLocalTime::operator<=(const CKorLocalTime& oOther) const
{
    return GetLocaltime() <= oOther.GetLocaltime();
}

bool CKorLocalTime::operator>=(const CKorLocalTime& oOther) const
{
    return GetLocaltime() >= oOther.GetLocaltime();
}

bool operator==(const CKorLocalTime& oLeft, const CKorLocalTime& oRight)
{
    return oLeft.GetLocaltime() == oRight.GetLocaltime();
}

bool operator!=(const CKorLocalTime& oLeft, const CKorLocalTime& oRight)
{
    return !(oLeft == oRight);
}

int CKorLocalTime::CalcFirstWeekdayOfMonth(int nMonth, int nYear, EWeekday eWeekday)
{
    if (eWeekday < eTuesday || eWeekday > eMonday)
        return 0;
    const auto nFirstDay = static_cast<unsigned>(CalcNumOfDays(nYear, nMonth, 1));
    const int nFirstWeekday = static_cast<int>((nFirstDay + 4) % 7);
    return 1 + (eWeekday - nFirstWeekday + 7) % 7;
}

int CKorLocalTime::CalcDayFromWeek(int nMonth, int nYear, EWeekday eWeekday, int nIndex)
{
    int nDay = CalcFirstWeekdayOfMonth(nMonth, nYear, eWeekday);
    if (nDay == 0)
        return 0;
    const int nLastDay = GetNumOfDaysPerMonth(nYear, nMonth);
    for (int nFound = 1; nFound < nIndex && nDay + 7 <= nLastDay; ++nFound)
        nDay += 7;
    return nDay;
}
