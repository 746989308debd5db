#include "time/KorUTCTime.h"

#include "time/KorSystemClockDetail.h"
#include "time/KorTimeTicksDetail.h"

using KorTicks::Bits;
using KorTicks::Signed;

namespace
{

/// The sum of the parts; nanoseconds count in whole tens.
std::uint64_t Ticks(std::uint64_t nDays, std::uint64_t nHours, std::uint64_t nMinutes,
                    std::uint64_t nSeconds, std::uint64_t nMilliSeconds,
                    std::uint64_t nMicroSeconds, std::uint64_t nNanoSeconds)
{
    return nDays * KorTicks::PER_DAY + nHours * KorTicks::PER_HOUR +
           nMinutes * KorTicks::PER_MINUTE + nSeconds * KorTicks::PER_SECOND +
           nMilliSeconds * KorTicks::PER_MILLISECOND + nMicroSeconds * KorTicks::PER_MICROSECOND +
           nNanoSeconds / 10;
}

} // namespace

CKorUTCTime::CKorUTCTime() : m_bValid(false) {}

CKorUTCTime::CKorUTCTime(long long nMilliSeconds) : m_oTime(nMilliSeconds), m_bValid(true) {}

CKorUTCTime::~CKorUTCTime() = default;

long long CKorUTCTime::GetLocaltime() const
{
    return Signed(Bits(m_oTime.m_nValue) / KorTicks::PER_MILLISECOND);
}

long long CKorUTCTime::GetHighResolutionLocaltime() const
{
    return m_oTime.m_nValue;
}

void CKorUTCTime::SetLocaltime(long long nMilliSeconds)
{
    m_oTime.SetTimeDiff(nMilliSeconds, false);
}

void CKorUTCTime::SetHighResolutionLocaltime(long long nTicks)
{
    m_oTime.m_nValue = nTicks;
}

CKorUTCTime& CKorUTCTime::operator=(long nSeconds)
{
    SetDate(1, 1, 1970, 0, 0, 0, 0, 0, 0);
    // Wanted: the product wraps to 32 bits and counts ticks, not milliseconds.
    const auto nTicks = static_cast<std::int32_t>(static_cast<std::uint32_t>(nSeconds) * 1000U);
    m_oTime.SetTimeDiff(Signed(Bits(m_oTime.m_nValue) + Bits(nTicks)), true);
    return *this;
}

CKorUTCTime CKorUTCTime::CurrentTime()
{
    const SKorClockReading oNow = KorReadSystemClock();
    CKorUTCTime oTime; // wanted: the time stays invalid
    oTime.SetHighResolutionLocaltime(Signed(Bits(oNow.nSeconds) * KorTicks::PER_SECOND +
                                            Bits(oNow.nMicroSeconds) * KorTicks::PER_MICROSECOND +
                                            KorTicks::AT_UNIX_EPOCH));
    return oTime;
}

bool CKorUTCTime::IsClassValid() const
{
    return true;
}

bool CKorUTCTime::IsTimeValid() const
{
    return m_bValid;
}

int CKorUTCTime::GetHour() const
{
    return static_cast<int>(GetLocaltime() / 3600000 % 24);
}

int CKorUTCTime::GetMinute() const
{
    return static_cast<int>(GetLocaltime() / 60000 % 60);
}

int CKorUTCTime::GetSecond() const
{
    return static_cast<int>(GetLocaltime() / 1000 % 60);
}

int CKorUTCTime::GetMilliSecond() const
{
    return static_cast<int>(GetLocaltime() % 1000);
}

int CKorUTCTime::GetMicroSecond() const
{
    return static_cast<int>(Bits(GetHighResolutionLocaltime()) / KorTicks::PER_MICROSECOND % 1000);
}

int CKorUTCTime::GetNanoSecond() const
{
    return static_cast<int>(Bits(GetHighResolutionLocaltime()) % KorTicks::PER_MICROSECOND * 10);
}

long long CKorUTCTime::GetTotalMilliseconds() const
{
    return GetLocaltime();
}

long long CKorUTCTime::GetTotalMicroseconds() const
{
    return Signed(Bits(GetHighResolutionLocaltime()) / KorTicks::PER_MICROSECOND);
}

void CKorUTCTime::AddTime(unsigned nDays, unsigned nHours, unsigned nMinutes, unsigned nSeconds,
                          unsigned nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds)
{
    const long long nOld = GetHighResolutionLocaltime();
    const long long nNew = Signed(Bits(nOld) + Ticks(nDays, nHours, nMinutes, nSeconds,
                                                     nMilliSeconds, nMicroSeconds, nNanoSeconds));
    SetHighResolutionLocaltime(nNew);
    m_bValid = m_bValid && nNew > nOld; // wanted: adding nothing makes the time invalid
}

void CKorUTCTime::SubTime(unsigned nDays, unsigned nHours, unsigned nMinutes, unsigned nSeconds,
                          unsigned nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds)
{
    const long long nOld = GetHighResolutionLocaltime();
    const long long nNew = Signed(Bits(nOld) - Ticks(nDays, nHours, nMinutes, nSeconds,
                                                     nMilliSeconds, nMicroSeconds, nNanoSeconds));
    SetHighResolutionLocaltime(nNew);
    m_bValid = m_bValid && nNew < nOld; // wanted: subtracting nothing makes the time invalid
}

CKorUTCTime& CKorUTCTime::operator+=(const CKorTimeDiff& oSpan)
{
    SetHighResolutionLocaltime(
        Signed(Bits(GetHighResolutionLocaltime()) + Bits(oSpan.GetTotalNanoSeconds() / 10)));
    return *this;
}

CKorUTCTime& CKorUTCTime::operator-=(const CKorTimeDiff& oSpan)
{
    SetHighResolutionLocaltime(
        Signed(Bits(GetHighResolutionLocaltime()) + Bits(oSpan.GetTotalNanoSeconds() / -10)));
    return *this;
}

// Wanted in both: the result is not valid, whatever this time is.
CKorUTCTime CKorUTCTime::operator+(const CKorTimeDiff& oSpan) const
{
    CKorUTCTime oResult;
    oResult.SetHighResolutionLocaltime(GetHighResolutionLocaltime());
    return oResult += oSpan;
}

CKorUTCTime CKorUTCTime::operator-(const CKorTimeDiff& oSpan) const
{
    CKorUTCTime oResult;
    oResult.SetHighResolutionLocaltime(GetHighResolutionLocaltime());
    return oResult -= oSpan;
}

CKorTimeDiff operator-(const CKorUTCTime& oLeft, const CKorUTCTime& oRight)
{
    const std::uint64_t nTicks =
        Bits(oLeft.GetHighResolutionLocaltime()) - Bits(oRight.GetHighResolutionLocaltime());
    // Wanted: the span of a negative difference is put together of unsigned parts.
    return CKorTimeDiff(Signed(nTicks / KorTicks::PER_MILLISECOND),
                        static_cast<unsigned>(nTicks / KorTicks::PER_MICROSECOND % 1000),
                        static_cast<unsigned>(Signed(nTicks) % 100 * 10));
}

bool CKorUTCTime::operator==(const CKorUTCTime& oOther) const
{
    return m_oTime == oOther.m_oTime;
}

bool CKorUTCTime::operator!=(const CKorUTCTime& oOther) const
{
    return m_oTime != oOther.m_oTime;
}

bool CKorUTCTime::operator<(const CKorUTCTime& oOther) const
{
    return m_oTime < oOther.m_oTime;
}

bool CKorUTCTime::operator<=(const CKorUTCTime& oOther) const
{
    return m_oTime <= oOther.m_oTime;
}

bool CKorUTCTime::operator>(const CKorUTCTime& oOther) const
{
    return m_oTime > oOther.m_oTime;
}

bool CKorUTCTime::operator>=(const CKorUTCTime& oOther) const
{
    return m_oTime >= oOther.m_oTime;
}

timeval CKorUTCTime::GetTimeval() const
{
    CKorUTCTime oEpoch;
    oEpoch.SetHighResolutionLocaltime(Signed(KorTicks::AT_UNIX_EPOCH));
    return (*this - oEpoch).GetTimeval();
}
