#include "time/KorTimeZone.h"

#include "time/KorInstantDetail.h"
#include "time/KorSystemClockDetail.h"
#include "time/KorUnixTime.h"
#include "time/KorZoneDataDetail.h"
#include "time/KorZoneSourceDetail.h"

namespace
{

/// Combines a date and a time of the day to what a clock of UTC shows at that Unix second.
/// @return whether the parts are in range
bool ReadingOf(int nYear, int nMonth, int nDay, int nHour, int nMinute, int nSecond,
               std::int64_t& rnReading)
{
    if (nMonth < 1 || nMonth > 12 || nDay < 1 ||
        nDay > KorCalendar::DaysOfMonth(nMonth, KorCalendar::IsLeapYear(nYear)) || nHour < 0 ||
        nHour > 23 || nMinute < 0 || nMinute > 59 || nSecond < 0 || nSecond > 59)
        return false;
    const std::int64_t nDays = KorCalendar::DayOfDate(nYear, nMonth, nDay);
    const int nOfDay = (nHour * 60 + nMinute) * 60 + nSecond;
    rnReading = nDays * KorInstant::SECONDS_PER_DAY + nOfDay - KorInstant::UNIX_EPOCH;
    return true;
}

/// Null for UTC.
const SKorZoneType* TypeAt(const KorZonePointer& pData, const CKorUTCTime& oTime)
{
    return pData != nullptr ? &pData->TypeAt(KorToUnixTime(oTime)) : nullptr;
}

} // namespace

bool CKorTimeZone::Load(const char* pszName)
{
    if (pszName == nullptr || *pszName == '\0') {
        KorZonePointer pData;
        const EKorZoneSearch eSearch = KorProcessZone(pData);
        if (eSearch != ZONE_REFUSED)
            m_pData = std::move(pData);
        return eSearch != ZONE_REFUSED;
    }
    const std::string strName(*pszName == ':' ? pszName + 1 : pszName);
    std::string strPath;
    return KorZonePath(strName, strPath) && KorLoadZone(strPath, strName, m_pData) == ZONE_FOUND;
}

int CKorTimeZone::GetOffset(const CKorUTCTime& oTime) const
{
    const SKorZoneType* const pType = TypeAt(m_pData, oTime);
    return pType != nullptr ? pType->nOffset : 0;
}

bool CKorTimeZone::IsSummerTime(const CKorUTCTime& oTime) const
{
    const SKorZoneType* const pType = TypeAt(m_pData, oTime);
    return pType != nullptr && pType->bSummerTime;
}

std::string CKorTimeZone::GetAbbreviation(const CKorUTCTime& oTime) const
{
    const SKorZoneType* const pType = TypeAt(m_pData, oTime);
    return pType != nullptr ? pType->strAbbreviation : "UTC";
}

CKorTimeZone::EKind CKorTimeZone::GetKind(int nYear, int nMonth, int nDay, int nHour, int nMinute,
                                          int nSecond) const
{
    std::int64_t nReading = 0;
    if (!ReadingOf(nYear, nMonth, nDay, nHour, nMinute, nSecond, nReading))
        return KIND_NEVER;
    return m_pData != nullptr ? static_cast<EKind>(m_pData->Find(nReading).eKind) : KIND_UNIQUE;
}

CKorUTCTime CKorTimeZone::ToUtc(int nYear, int nMonth, int nDay, int nHour, int nMinute,
                                int nSecond, EChoice eChoice) const
{
    std::int64_t nReading = 0;
    if (!ReadingOf(nYear, nMonth, nDay, nHour, nMinute, nSecond, nReading))
        return CKorUTCTime();
    if (m_pData == nullptr)
        return KorFromUnixTime(nReading);
    const SKorZoneInstants oInstants = m_pData->Find(nReading);
    return KorFromUnixTime(eChoice == CHOICE_EARLIER ? oInstants.nEarlier : oInstants.nLater);
}

int KorGetUtcOffset(const CKorUTCTime& oTime)
{
    const std::int64_t nSeconds = KorToUnixTime(oTime);
    KorZonePointer pData;
    if (KorProcessZone(pData) == ZONE_FOUND)
        return pData->TypeAt(nSeconds).nOffset;
    SKorZoneReading oZone = {0, false};
    KorReadZoneData(nSeconds, oZone);
    return oZone.nOffset;
}
