#include "time/KorTimeDiff.h"

#include "time/KorTimeTicksDetail.h"

using KorTicks::Bits;
using KorTicks::Signed;

namespace
{

/// The quotient of the unsigned division that totals, quotients and cuts share.
long long Quotient(long long nTicks, std::uint64_t nUnit)
{
    return Signed(Bits(nTicks) / nUnit);
}

} // namespace

CKorTimeDiff::CKorTimeDiff() : m_nValue(0) {}

CKorTimeDiff::CKorTimeDiff(long long nMilliSeconds) : m_nValue(0)
{
    SetTimeDiff(nMilliSeconds, false);
}

CKorTimeDiff::CKorTimeDiff(long long nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds)
    : m_nValue(Signed(Bits(nMilliSeconds) * KorTicks::PER_MILLISECOND +
                      nMicroSeconds * KorTicks::PER_MICROSECOND + nNanoSeconds / 10))
{
}

CKorTimeDiff::CKorTimeDiff(int nDays, int nHours, int nMinutes, int nSeconds, int nMilliSeconds,
                           int nMicroSeconds, int nNanoSeconds)
    : m_nValue(0)
{
    SetTime(nDays, nHours, nMinutes, nSeconds, nMilliSeconds, nMicroSeconds, nNanoSeconds);
}

const CKorTimeDiff& CKorTimeDiff::operator=(const CKorTimeDiff& oOther) const
{
    m_nValue = oOther.m_nValue;
    return *this;
}

void CKorTimeDiff::SetTimeDiff(long long nValue, bool bHighResolution)
{
    m_nValue = bHighResolution ? nValue : Signed(Bits(nValue) * KorTicks::PER_MILLISECOND);
}

void CKorTimeDiff::SetTime(int nDays, int nHours, int nMinutes, int nSeconds, int nMilliSeconds,
                           int nMicroSeconds, int nNanoSeconds)
{
    m_nValue =
        Signed(Bits(nDays) * KorTicks::PER_DAY + Bits(nHours) * KorTicks::PER_HOUR +
               Bits(nMinutes) * KorTicks::PER_MINUTE + Bits(nSeconds) * KorTicks::PER_SECOND +
               Bits(nMilliSeconds) * KorTicks::PER_MILLISECOND +
               Bits(nMicroSeconds) * KorTicks::PER_MICROSECOND + Bits(nNanoSeconds / 10));
}

long long CKorTimeDiff::GetTotalDays() const
{
    return Quotient(m_nValue, KorTicks::PER_DAY);
}

long long CKorTimeDiff::GetTotalHours() const
{
    return Quotient(m_nValue, KorTicks::PER_HOUR);
}

long long CKorTimeDiff::GetTotalMinutes() const
{
    return Quotient(m_nValue, KorTicks::PER_MINUTE);
}

long long CKorTimeDiff::GetTotalSeconds() const
{
    return Quotient(m_nValue, KorTicks::PER_SECOND);
}

long long CKorTimeDiff::GetTotalMilliSeconds() const
{
    return Quotient(m_nValue, KorTicks::PER_MILLISECOND);
}

long long CKorTimeDiff::GetTotalMicroSeconds() const
{
    return Quotient(m_nValue, KorTicks::PER_MICROSECOND);
}

long long CKorTimeDiff::GetTotalNanoSeconds() const
{
    return Signed(Bits(m_nValue) * 10);
}

timeval CKorTimeDiff::GetTimeval() const
{
    const long long nMicroSeconds = GetTotalMicroSeconds();
    timeval oTime;
    oTime.tv_sec = static_cast<decltype(oTime.tv_sec)>(nMicroSeconds / 1000000);
    oTime.tv_usec = static_cast<decltype(oTime.tv_usec)>(nMicroSeconds % 1000000);
    return oTime;
}

CKorTimeDiff CKorTimeDiff::operator+(const CKorTimeDiff& oOther) const
{
    return CKorTimeDiff(*this) += oOther;
}

CKorTimeDiff CKorTimeDiff::operator-(const CKorTimeDiff& oOther) const
{
    return CKorTimeDiff(*this) -= oOther;
}

CKorTimeDiff& CKorTimeDiff::operator+=(const CKorTimeDiff& oOther)
{
    m_nValue = Signed(Bits(m_nValue) + Bits(oOther.m_nValue));
    return *this;
}

CKorTimeDiff& CKorTimeDiff::operator-=(const CKorTimeDiff& oOther)
{
    m_nValue = Signed(Bits(m_nValue) - Bits(oOther.m_nValue));
    return *this;
}

CKorTimeDiff CKorTimeDiff::operator*(const unsigned long long& nFactor) const
{
    return CKorTimeDiff(*this) *= nFactor;
}

CKorTimeDiff operator*(unsigned long long nFactor, const CKorTimeDiff& oSpan)
{
    return oSpan * nFactor;
}

CKorTimeDiff& CKorTimeDiff::operator*=(const unsigned long long& nFactor)
{
    m_nValue = Signed(Bits(m_nValue) * nFactor);
    return *this;
}

CKorTimeDiff CKorTimeDiff::operator/(const unsigned long long& nDivisor) const
{
    return CKorTimeDiff(*this) /= nDivisor;
}

CKorTimeDiff& CKorTimeDiff::operator/=(const unsigned long long& nDivisor)
{
    if (nDivisor != 0)
        m_nValue = Quotient(m_nValue, nDivisor);
    return *this;
}

// Wanted: "<" and ">" are unsigned while "<=" and ">=" are signed.
bool CKorTimeDiff::operator<(const CKorTimeDiff& oOther) const
{
    return Bits(m_nValue) < Bits(oOther.m_nValue);
}

bool CKorTimeDiff::operator>(const CKorTimeDiff& oOther) const
{
    return Bits(m_nValue) > Bits(oOther.m_nValue);
}

bool CKorTimeDiff::operator<=(const CKorTimeDiff& oOther) const
{
    return m_nValue <= oOther.m_nValue;
}

bool CKorTimeDiff::operator>=(const CKorTimeDiff& oOther) const
{
    return m_nValue >= oOther.m_nValue;
}

bool operator==(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight)
{
    return oLeft.m_nValue == oRight.m_nValue;
}

bool operator!=(const CKorTimeDiff& oLeft, const CKorTimeDiff& oRight)
{
    return !(oLeft == oRight);
}

void CKorTimeDiff::CutOffParts(ETimeDiffPart ePart)
{
    static constexpr std::uint64_t UNITS[] = {KorTicks::PER_DAY, KorTicks::PER_HOUR,
                                              KorTicks::PER_MINUTE, KorTicks::PER_SECOND};
    if (ePart >= eDiffDays && ePart <= eDiffSeconds)
        m_nValue = Signed(Bits(m_nValue) / UNITS[ePart] * UNITS[ePart]);
}
