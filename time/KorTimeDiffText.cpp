#include "text/KorStringDetail.h"
#include "time/KorStreamSlotDetail.h"
#include "time/KorTextReaderDetail.h"
#include "time/KorTextWriterDetail.h"
#include "time/KorTimeDiff.h"
#include "time/KorTimeTicksDetail.h"

#include <sstream>

namespace
{

using KorTicks::Bits;

/// A field below the hours.
struct SField
{
    std::uint64_t nUnit;   ///< in ticks
    std::uint32_t nUnits;  ///< how many make the next larger one
    std::uint32_t nFactor; ///< by which their number is written
    int nWidth;
    char szSeparator[2]; ///< in front of it
};

/// The formats from hours and minutes on have one of them more each.
constexpr SField FIELDS[] = {
    {KorTicks::PER_MINUTE, 60, 1, 2, ":"},
    {KorTicks::PER_SECOND, 60, 1, 2, ":"},
    {KorTicks::PER_MILLISECOND, 1000, 1, 3, "."},
    {KorTicks::PER_MICROSECOND, 1000, 1, 3, "."},
    {1, 100, 10, 3, "."},
};

template <class TText>
void AddFields(TText& oText, std::uint64_t nTicks, long nFields)
{
    for (const SField* p = FIELDS; p != FIELDS + nFields; ++p) {
        oText.Text(p->szSeparator);
        oText.Number(nTicks / p->nUnit % p->nUnits * p->nFactor, p->nWidth);
    }
}

template <class TText>
void AddSpan(TText& oText, long long nTicks, long nFormat)
{
    // Wanted: hours and days are those of the unsigned ticks, so a negative span has very many.
    const std::uint64_t nUnsigned = Bits(nTicks);
    const std::uint64_t nAbsolute = nTicks < 0 ? 0 - nUnsigned : nUnsigned;
    if (nTicks < 0)
        oText.Text("-");
    if (nFormat == CKorTimeDiff::eDiffMilliSeconds) {
        oText.Number(nAbsolute / KorTicks::PER_MILLISECOND, 0);
    } else if (nFormat == CKorTimeDiff::eDiffMicroSeconds) {
        oText.Number(nAbsolute / KorTicks::PER_MICROSECOND, 0);
    } else if (nFormat == CKorTimeDiff::eDiffDaysHhMmSs) {
        oText.Number(nUnsigned / KorTicks::PER_DAY, 0);
        oText.Text("#");
        oText.Number(nAbsolute / KorTicks::PER_HOUR, 2); // wanted: all hours of the span
        AddFields(oText, nAbsolute, CKorTimeDiff::eDiffHhMmSs);
    } else if (nFormat >= CKorTimeDiff::eDiffHhMm && nFormat <= CKorTimeDiff::eDiffHhMmSsMsUsNs) {
        oText.Number(nUnsigned / KorTicks::PER_HOUR, 0);
        AddFields(oText, nAbsolute, nFormat);
    } else {
        oText.Text("Fehler ");
    }
}

bool IsTotal(long nFormat)
{
    return nFormat == CKorTimeDiff::eDiffMilliSeconds || nFormat == CKorTimeDiff::eDiffMicroSeconds;
}

/// Totals are read as the stream reads any integer: with its locale and flags.
long long ReadTotal(std::istream& oStream, long nFormat)
{
    long long nTotal = 0;
    oStream >> nTotal;
    return KorTicks::Signed(Bits(nTotal) * (nFormat == CKorTimeDiff::eDiffMilliSeconds
                                                ? KorTicks::PER_MILLISECOND
                                                : KorTicks::PER_MICROSECOND));
}

template <class TSource>
int ReadField(TSource& oSource, unsigned nDigits)
{
    return static_cast<int>(oSource.TakeNumber(nDigits));
}

template <class TSource>
int ReadNextField(TSource& oSource, char cSeparator, unsigned nDigits)
{
    if (!KorTakeSeparator(oSource, cSeparator))
        oSource.Fail();
    return ReadField(oSource, nDigits);
}

/// Reads a format for which IsReadableClock() is true.
template <class TSource>
CKorTimeDiff ReadClock(TSource& oSource, long nFormat)
{
    const bool bDays = nFormat == CKorTimeDiff::eDiffDaysHhMmSs;
    const int nDays = bDays ? ReadField(oSource, 4) : 0;
    const int nHours = bDays ? ReadNextField(oSource, '#', 2) : ReadField(oSource, 2);
    const int nMinutes = ReadNextField(oSource, ':', 2);
    const int nSeconds = nFormat != CKorTimeDiff::eDiffHhMm ? ReadNextField(oSource, ':', 2) : 0;
    const int nMilliSeconds =
        nFormat == CKorTimeDiff::eDiffHhMmSsMs ? ReadNextField(oSource, '.', 3) : 0;
    return CKorTimeDiff(nDays, nHours, nMinutes, nSeconds, nMilliSeconds, 0, 0);
}

bool IsReadableClock(long nFormat)
{
    return nFormat == CKorTimeDiff::eDiffHhMm || nFormat == CKorTimeDiff::eDiffHhMmSs ||
           nFormat == CKorTimeDiff::eDiffHhMmSsMs || nFormat == CKorTimeDiff::eDiffDaysHhMmSs;
}

} // namespace

int CKorTimeDiff::m_nTimeDiffFlagIdx = -1;

std::ios_base& CKorTimeDiff::SetDiffTimeFlag(std::ios_base& oStream, EDiffFormat eFormat)
{
    static const int nIndex = KorTakeStreamSlot(m_nTimeDiffFlagIdx);
    oStream.iword(nIndex) = eFormat;
    return oStream;
}

std::ostream& CKorTimeDiff::PutStream(std::ostream& oStream) const
{
    const long nFormat = KorStreamSlot(oStream, m_nTimeDiffFlagIdx);
    return KorPutText(oStream, true,
                      [this, nFormat](auto& oText) { AddSpan(oText, m_nValue, nFormat); });
}

std::istream& CKorTimeDiff::GetStream(std::istream& oStream)
{
    m_nValue = 0;
    const long nFormat = KorStreamSlot(oStream, m_nTimeDiffFlagIdx);
    if (IsTotal(nFormat)) {
        m_nValue = ReadTotal(oStream, nFormat);
    } else if (IsReadableClock(nFormat)) {
        CKorStreamSource oSource(oStream);
        *this = ReadClock(oSource, nFormat);
    }
    return oStream;
}

void CKorTimeDiff::Time2Str(std::string& strText) const
{
    strText = m_nValue < 0 ? "-" : "";
    strText.append(KorDecimal(m_nValue < 0 ? 0 - Bits(m_nValue) : Bits(m_nValue)));
}

std::ostream& operator<<(std::ostream& oStream, const CKorTimeDiff& oSpan)
{
    return oSpan.PutStream(oStream);
}

std::istream& operator>>(std::istream& oStream, CKorTimeDiff& oSpan)
{
    return oSpan.GetStream(oStream);
}

std::string KorToString(const CKorTimeDiff& oSpan, CKorTimeDiff::EDiffFormat eFormat)
{
    if (KorNewStreamWritesPlainly()) {
        CKorPlainText oText;
        AddSpan(oText, oSpan.m_nValue, eFormat);
        return oText.ToString();
    }
    std::ostringstream oStream;
    CKorTimeDiff::SetDiffTimeFlag(oStream, eFormat);
    oStream << oSpan;
    return oStream.str();
}

bool KorFromString(CKorTimeDiff& oSpan, CKorTimeDiff::EDiffFormat eFormat,
                   const std::string& strText)
{
    // The zero behind the text ends every number before the end of the input, as for CKorUTCTime.
    if (IsReadableClock(eFormat)) {
        CKorTextSource oSource(strText.c_str(), strText.c_str() + strText.size() + 1);
        oSpan = ReadClock(oSource, eFormat);
        return !oSource.HasFailed();
    }
    std::istringstream oStream(strText + '\0');
    CKorTimeDiff::SetDiffTimeFlag(oStream, eFormat);
    oStream >> oSpan;
    return !oStream.fail();
}
