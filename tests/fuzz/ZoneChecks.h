#pragma once

#include "tests/fuzz/Fuzz.h"
#include "time/KorZoneDataDetail.h"

#include <algorithm>

/// An instant and what clocks show then lead to each other.
inline void CheckInstant(const CKorZoneData& oZone, std::int64_t nSeconds)
{
    nSeconds = std::clamp(nSeconds, -CKorZoneData::MAX_SECONDS, CKorZoneData::MAX_SECONDS);
    const SKorZoneType& oType = oZone.TypeAt(nSeconds);
    const SKorZonePeriod oPeriod = oZone.PeriodAt(nSeconds);
    Expect(oPeriod.nBegin <= nSeconds && nSeconds < oPeriod.nEnd, "an instant is in its period",
           nSeconds);
    ExpectEqual(oType.nOffset, oPeriod.nOffset, "the offset of a period");

    const std::int64_t nReading = nSeconds + oType.nOffset;
    const SKorZoneInstants oInstants = oZone.Find(nReading);
    Expect(oInstants.nEarlier <= nSeconds && nSeconds <= oInstants.nLater,
           "an instant is found by its reading", nSeconds);
    Expect(oInstants.eKind != SKorZoneInstants::NEVER, "what clocks show occurs", nSeconds);
    const bool bUnique = oInstants.eKind == SKorZoneInstants::UNIQUE;
    ExpectEqual(bUnique, oInstants.nEarlier == oInstants.nLater, "one instant or two");
    for (const std::int64_t nFound : {oInstants.nEarlier, oInstants.nLater})
        ExpectEqual(nReading, nFound + oZone.TypeAt(nFound).nOffset, "the reading of an instant");
}

/// A reading occurs, or its instants lie around a gap.
inline void CheckReading(const CKorZoneData& oZone, std::int64_t nReading)
{
    nReading = std::clamp(nReading, -CKorZoneData::MAX_SECONDS, CKorZoneData::MAX_SECONDS);
    const SKorZoneInstants oInstants = oZone.Find(nReading);
    Expect(oInstants.nEarlier <= oInstants.nLater, "the earlier instant is so", nReading);
    const bool bShown = oInstants.nEarlier + oZone.TypeAt(oInstants.nEarlier).nOffset == nReading;
    ExpectEqual(oInstants.eKind != SKorZoneInstants::NEVER, bShown, "whether a reading occurs");
}
