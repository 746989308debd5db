#include "time/KorTimeDiff.h"

#include "time/KorStreamSlotDetail.h"
#include "time/KorTimeTextDetail.h"
#include "time/KorTimeTicksDetail.h"
#include "time/StreamExtension.h"

#include <istream>
#include <ostream>
#include <sstream>

namespace
{

using KorTicks::Bits;

/// The minutes and as many of the smaller fields as the format has.
void AddMinutesAndBelow(CKorTimeText& oText, std::uint64_t nTicks, long nFormat)
{
    static constexpr struct
    {
        long nFirstFormat;
        const char* pszSeparator;
        std::uint64_t nUnit;
        std::uint64_t nUnits;
        int nWidth;
    } FIELDS[] = {
        {CKorTimeDiff::eDiffHhMm, ":", KorTicks::PER_MINUTE, 60, 2},
        {CKorTimeDiff::eDiffHhMmSs, ":", KorTicks::PER_SECOND, 60, 2},
        {CKorTimeDiff::eDiffHhMmSsMs, ".", KorTicks::PER_MILLISECOND, 1000, 3},
        {CKorTimeDiff::eDiffHhMmSsMsUs, ".", KorTicks::PER_MICROSECOND, 1000, 3},
    };
    for (const auto& oField : FIELDS) {
        if (nFormat < oField.nFirstFormat)
            return;
        oText.AddText(oField.pszSeparator);
        oText.AddUnsigned(nTicks / oField.nUnit % oField.nUnits, oField.nWidth);
    }
    if (nFormat == CKorTimeDiff::eDiffHhMmSsMsUsNs) {
        oText.AddText(".");
        oText.AddUnsigned(nTicks % KorTicks::PER_MICROSECOND * 10, 3);
    }
}

CKorTimeText TextOf(long long nTicks, long nFormat)
{
    // Wanted: hours and days are those of the unsigned ticks, so a negative span has very many.
    const std::uint64_t nUnsigned = Bits(nTicks);
    const std::uint64_t nAbsolute = nTicks < 0 ? 0 - nUnsigned : nUnsigned;
    CKorTimeText oText;
    if (nTicks < 0)
        oText.AddText("-");
    switch (nFormat) {
    case CKorTimeDiff::eDiffMilliSeconds:
        oText.AddUnsigned(nAbsolute / KorTicks::PER_MILLISECOND, 0);
        break;
    case CKorTimeDiff::eDiffHhMm:
    case CKorTimeDiff::eDiffHhMmSs:
    case CKorTimeDiff::eDiffHhMmSsMs:
    case CKorTimeDiff::eDiffHhMmSsMsUs:
    case CKorTimeDiff::eDiffHhMmSsMsUsNs:
        oText.AddUnsigned(nUnsigned / KorTicks::PER_HOUR, 0);
        AddMinutesAndBelow(oText, nAbsolute, nFormat);
        break;
    case CKorTimeDiff::eDiffDaysHhMmSs:
        oText.AddUnsigned(nUnsigned / KorTicks::PER_DAY, 0);
        oText.AddText("#");
        oText.AddUnsigned(nAbsolute / KorTicks::PER_HOUR, 2); // wanted: all hours of the span
        AddMinutesAndBelow(oText, nAbsolute, CKorTimeDiff::eDiffHhMmSs);
        break;
    case CKorTimeDiff::eDiffMicroSeconds:
        oText.AddUnsigned(nAbsolute / KorTicks::PER_MICROSECOND, 0);
        break;
    default:
        oText.AddText("Fehler ");
    }
    return oText;
}

int ReadField(std::istream& oStream, unsigned nDigits)
{
    return static_cast<int>(GetSizedUInt(oStream, nDigits, nullptr, false));
}

int ReadNextField(std::istream& oStream, char cSeparator, unsigned nDigits)
{
    SeparateChar(oStream, cSeparator, true);
    return ReadField(oStream, nDigits);
}

long long ReadTotal(std::istream& oStream, std::uint64_t nUnit)
{
    long long nTotal = 0;
    oStream >> nTotal;
    return KorTicks::Signed(Bits(nTotal) * nUnit);
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
    return TextOf(m_nValue, KorStreamSlot(oStream, m_nTimeDiffFlagIdx)).Put(oStream);
}

std::istream& CKorTimeDiff::GetStream(std::istream& oStream)
{
    m_nValue = 0;
    const long nFormat = KorStreamSlot(oStream, m_nTimeDiffFlagIdx);
    switch (nFormat) {
    case eDiffMilliSeconds:
        m_nValue = ReadTotal(oStream, KorTicks::PER_MILLISECOND);
        break;
    case eDiffMicroSeconds:
        m_nValue = ReadTotal(oStream, KorTicks::PER_MICROSECOND);
        break;
    case eDiffHhMm:
    case eDiffHhMmSs:
    case eDiffHhMmSsMs: {
        const int nHours = ReadField(oStream, 2);
        const int nMinutes = ReadNextField(oStream, ':', 2);
        const int nSeconds = nFormat >= eDiffHhMmSs ? ReadNextField(oStream, ':', 2) : 0;
        const int nMilliSeconds = nFormat == eDiffHhMmSsMs ? ReadNextField(oStream, '.', 3) : 0;
        SetTime(0, nHours, nMinutes, nSeconds, nMilliSeconds, 0, 0);
        break;
    }
    case eDiffDaysHhMmSs: {
        const int nDays = ReadField(oStream, 4);
        const int nHours = ReadNextField(oStream, '#', 2);
        const int nMinutes = ReadNextField(oStream, ':', 2);
        const int nSeconds = ReadNextField(oStream, ':', 2);
        SetTime(nDays, nHours, nMinutes, nSeconds, 0, 0, 0);
        break;
    }
    default: // the other formats are for writing only
        break;
    }
    return oStream;
}

void CKorTimeDiff::Time2Str(std::string& strText) const
{
    strText = std::to_string(m_nValue);
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
    return TextOf(oSpan.m_nValue, eFormat).ToString();
}

bool KorFromString(CKorTimeDiff& oSpan, CKorTimeDiff::EDiffFormat eFormat,
                   const std::string& strText)
{
    // The zero ends every number before the end of the input, as for CKorUTCTime.
    std::istringstream oStream(strText + '\0');
    CKorTimeDiff::SetDiffTimeFlag(oStream, eFormat);
    oStream >> oSpan;
    return !oStream.fail();
}
