#include "time/KorZoneDataDetail.h"

#include "time/KorCalendarDetail.h"
#include "time/KorZoneRuleDetail.h"

#include <algorithm>
#include <utility>

using KorCalendar::FloorQuotient;

namespace
{

using Limits = std::numeric_limits<std::int64_t>;

struct SChange
{
    std::int64_t nSecond;
    bool bToSummer;
};

/// Moves a change up before those that come after it. Few do: a rule's changes come nearly in
/// their order.
void SortIn(SChange* pFirst, SChange* pChange)
{
    for (; pChange != pFirst && pChange->nSecond < pChange[-1].nSecond; --pChange)
        std::swap(pChange[0], pChange[-1]);
}

/// The changes of a rule from years before an instant to more than 400 years behind it, ascending.
/// Of those at the same instant the last one counts, which is the latest by the calendar: summer
/// time may end at the end of a year and begin again that very second.
std::vector<SChange> ChangesAround(const CKorZoneRule& oRule, std::int64_t nFrom)
{
    constexpr std::int64_t SECONDS_PER_YEAR = 31556952;
    constexpr std::int64_t YEARS_AROUND = 3; // the quotient and changes may be off by a year
    const std::int64_t nYear = 1970 + FloorQuotient(nFrom, SECONDS_PER_YEAR);
    std::vector<SChange> vecChanges(2 * (KorCalendar::YEARS_PER_ERA + 2 * YEARS_AROUND));
    std::int64_t n = nYear - YEARS_AROUND;
    SChange* const pFirst = vecChanges.data();
    for (SChange* pChange = pFirst; pChange != pFirst + vecChanges.size(); ++n) {
        *pChange = {oRule.SummerBegin(n), true};
        SortIn(pFirst, pChange++);
        *pChange = {oRule.SummerEnd(n), false};
        SortIn(pFirst, pChange++);
    }
    return vecChanges;
}

} // namespace

CKorZoneData::CKorZoneData(std::vector<SKorZoneType> vecTypes, std::vector<std::int64_t> vecChanges,
                           std::vector<std::uint16_t> vecTypeOfPeriod)
    : m_vecChanges(std::move(vecChanges)),
      m_vecTypeOfPeriod(std::move(vecTypeOfPeriod)),
      m_nLowestOffset(vecTypes.front().nOffset),
      m_nHighestOffset(vecTypes.front().nOffset)
{
    for (SKorZoneType& roType : vecTypes)
        AddType(std::move(roType));
}

CKorZoneData::CKorZoneData(const CKorZoneRule& oRule)
    : m_vecTypeOfPeriod(1, 0),
      m_nLowestOffset(oRule.Standard().nOffset),
      m_nHighestOffset(oRule.Standard().nOffset)
{
    AddRule(oRule, 0);
    if (oRule.HasSummerTime())
        m_nCycleBegin = m_vecChanges.front();
}

void CKorZoneData::Continue(const CKorZoneRule& oRule)
{
    if (m_vecChanges.empty()) {
        *this = CKorZoneData(oRule);
        return;
    }
    if (m_vecChanges.back() < MAX_SECONDS)
        AddRule(oRule, std::max(m_vecChanges.back(), -MAX_SECONDS));
}

void CKorZoneData::AddType(SKorZoneType oType)
{
    m_nLowestOffset = std::min(m_nLowestOffset, oType.nOffset);
    m_nHighestOffset = std::max(m_nHighestOffset, oType.nOffset);
    m_vecTypes.push_back(std::move(oType));
}

/// Lets the rule hold from nFrom on, which must not lie before the last change.
void CKorZoneData::AddRule(const CKorZoneRule& oRule, std::int64_t nFrom)
{
    const auto nStandard = static_cast<std::uint16_t>(m_vecTypes.size());
    AddType(oRule.Standard());
    m_vecTypeOfPeriod.back() = nStandard;
    if (!oRule.HasSummerTime())
        return;
    AddType(oRule.Summer());
    for (const SChange& oChange : ChangesAround(oRule, nFrom)) {
        const int nType = nStandard + (oChange.bToSummer ? 1 : 0);
        if (oChange.nSecond <= nFrom) {
            m_vecTypeOfPeriod.back() = static_cast<std::uint16_t>(nType);
            continue;
        }
        if (m_nCycleEnd == Limits::max())
            m_nCycleEnd = oChange.nSecond + SECONDS_PER_CYCLE;
        m_vecChanges.push_back(oChange.nSecond);
        m_vecTypeOfPeriod.push_back(static_cast<std::uint16_t>(nType));
    }
}

SKorZonePeriod CKorZoneData::PeriodAt(std::int64_t nSeconds) const
{
    const std::int64_t nShift = ShiftFor(nSeconds);
    const std::size_t nIndex = IndexOf(nSeconds + nShift);
    // Who is shifted arrives between two changes.
    const std::int64_t nBegin = nIndex == 0 ? Limits::min() : m_vecChanges[nIndex - 1] - nShift;
    const std::int64_t nEnd =
        nIndex == m_vecChanges.size() ? Limits::max() : m_vecChanges[nIndex] - nShift;
    return {nBegin, nEnd, m_vecTypes[m_vecTypeOfPeriod[nIndex]].nOffset};
}

SKorZoneInstants CKorZoneData::Find(std::int64_t nReading) const
{
    SKorZoneInstants oFound = {SKorZoneInstants::NEVER, 0, 0};
    std::int64_t nPassed = 0;
    std::int64_t nNext = nReading - m_nHighestOffset;
    while (nNext <= nReading - m_nLowestOffset) {
        const SKorZonePeriod oPeriod = PeriodAt(nNext);
        const std::int64_t nInstant = nReading - oPeriod.nOffset;
        const bool bFirst = oFound.eKind == SKorZoneInstants::NEVER;
        if (nInstant >= oPeriod.nEnd)
            nPassed = nInstant;
        else if (nInstant < oPeriod.nBegin && nPassed >= oPeriod.nBegin && bFirst) // a gap between
            oFound = {SKorZoneInstants::NEVER, nInstant, nPassed};
        else if (nInstant >= oPeriod.nBegin && bFirst)
            oFound = {SKorZoneInstants::UNIQUE, nInstant, nInstant};
        else if (nInstant >= oPeriod.nBegin)
            oFound = {SKorZoneInstants::TWICE, oFound.nEarlier, nInstant};
        nNext = oPeriod.nEnd;
    }
    return oFound;
}
