#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

class CKorZoneRule;

/// What a clock shows between two changes of its zone.
struct SKorZoneType
{
    std::int32_t nOffset; ///< seconds east of Greenwich
    bool bSummerTime;
    std::string strAbbreviation;
};

/// The time between two changes, in Unix seconds: from nBegin up to, not including, nEnd.
struct SKorZonePeriod
{
    std::int64_t nBegin;
    std::int64_t nEnd;
    std::int32_t nOffset;
};

/// The instants at which a clock shows a reading, the first and the last one; for a reading that
/// never occurs those that the offsets before and after the gap give.
struct SKorZoneInstants
{
    enum EKind
    {
        UNIQUE,
        TWICE,
        NEVER
    } eKind;
    std::int64_t nEarlier;
    std::int64_t nLater;
};

/// The changes of a zone in Unix seconds and the types between them.
///
/// A rule that goes on for ever is kept as 400 years of changes: the calendar repeats itself to
/// the second then, so any later instant is looked up in those years. Instants may lie up to
/// MAX_SECONDS from the epoch, beyond the year 4 billion.
class CKorZoneData
{
public:
    static constexpr std::int64_t MAX_SECONDS = std::int64_t{1} << 57;

    /// Takes what a file says: one type more than changes by vecTypeOfPeriod, the first of them for
    /// the time before the first change. Changes ascend, and indices lie within vecTypes.
    CKorZoneData(std::vector<SKorZoneType> vecTypes, std::vector<std::int64_t> vecChanges,
                 std::vector<std::uint16_t> vecTypeOfPeriod);
    /// Takes a rule that holds at any time.
    explicit CKorZoneData(const CKorZoneRule& oRule);

    /// Lets the rule hold from the last change on.
    void Continue(const CKorZoneRule& oRule);

    const SKorZoneType& TypeAt(std::int64_t nSeconds) const
    {
        return m_vecTypes[m_vecTypeOfPeriod[IndexOf(nSeconds + ShiftFor(nSeconds))]];
    }
    SKorZonePeriod PeriodAt(std::int64_t nSeconds) const;
    /// @param nReading  what the clock shows, as if it were UTC
    SKorZoneInstants Find(std::int64_t nReading) const;

private:
    static constexpr std::int64_t SECONDS_PER_CYCLE = 146097 * std::int64_t{86400};

    /// What leads from an instant to one that the changes cover and that has the same type.
    std::int64_t ShiftFor(std::int64_t nSeconds) const
    {
        if (nSeconds >= m_nCycleEnd)
            return -((nSeconds - m_nCycleEnd) / SECONDS_PER_CYCLE + 1) * SECONDS_PER_CYCLE;
        if (nSeconds < m_nCycleBegin)
            return ((m_nCycleBegin - 1 - nSeconds) / SECONDS_PER_CYCLE + 1) * SECONDS_PER_CYCLE;
        return 0;
    }
    /// The number of changes up to an instant. Without branches that depend on the instant, which
    /// a processor would guess wrong half of the time.
    std::size_t IndexOf(std::int64_t nSeconds) const
    {
        const std::int64_t* pFirst = m_vecChanges.data();
        std::size_t nCount = m_vecChanges.size();
        while (nCount > 1) {
            const std::size_t nHalf = nCount / 2;
            pFirst += pFirst[nHalf - 1] <= nSeconds ? nHalf : 0;
            nCount -= nHalf;
        }
        pFirst += nCount == 1 && *pFirst <= nSeconds ? 1 : 0;
        return static_cast<std::size_t>(pFirst - m_vecChanges.data());
    }
    void AddType(SKorZoneType oType);
    void AddRule(const CKorZoneRule& oRule, std::int64_t nFrom);

    std::vector<SKorZoneType> m_vecTypes;
    std::vector<std::int64_t> m_vecChanges;
    std::vector<std::uint16_t> m_vecTypeOfPeriod; ///< one before each change and one at the end
    std::int32_t m_nLowestOffset;
    std::int32_t m_nHighestOffset;
    /// Instants outside of this range are looked up 400 years, or a multiple, away.
    std::int64_t m_nCycleBegin = std::numeric_limits<std::int64_t>::min();
    std::int64_t m_nCycleEnd = std::numeric_limits<std::int64_t>::max();
};
