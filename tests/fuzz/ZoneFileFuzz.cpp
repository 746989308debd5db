// Zone files: those made of parts against a walk over their changes, any others for consistency.

#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/ZoneChecks.h"
#include "tests/time/ZoneFile.h"
#include "time/KorZoneFileDetail.h"

namespace
{

constexpr std::int32_t MAX_OFFSET = 26 * 3600;

ZoneFile MadeOfParts(Input& oInput)
{
    ZoneFile oFile;
    oFile.cVersion = oInput.PickValueInArray({'\0', '2', '3', '4'});
    oFile.strFooter = "\n\n";
    oFile.vecTypes.clear();
    for (auto n = oInput.ConsumeIntegralInRange(1, 6); n > 0; --n)
        oFile.vecTypes.push_back({oInput.ConsumeIntegralInRange(-MAX_OFFSET, MAX_OFFSET),
                                  oInput.ConsumeIntegralInRange<std::uint8_t>(0, 1),
                                  oInput.ConsumeIntegralInRange<std::uint8_t>(0, 7)});
    oFile.vecChanges.clear();
    std::int64_t nTime = oInput.ConsumeIntegral<std::int32_t>();
    for (auto n = oInput.ConsumeIntegralInRange(0, 40); n > 0 && nTime < INT32_MAX; --n) {
        oFile.vecChanges.emplace_back(nTime,
                                      oInput.ConsumeIntegralInRange<std::uint8_t>(
                                          0, static_cast<std::uint8_t>(oFile.vecTypes.size() - 1)));
        nTime += oInput.ConsumeIntegralInRange<std::int32_t>(1, 40000000);
    }
    return oFile;
}

/// The first type holds before the first change.
const ZoneFile::Type& TypeAt(const ZoneFile& oFile, std::int64_t nSeconds)
{
    std::uint8_t nType = 0;
    for (const auto& oChange : oFile.vecChanges)
        nType = oChange.first <= nSeconds ? oChange.second : nType;
    return oFile.vecTypes[nType];
}

void CheckMade(const ZoneFile& oFile, std::int64_t nInstant)
{
    const auto pZone = KorReadZoneFile(oFile.Content());
    Expect(pZone != nullptr, "a whole file is read");
    std::vector<std::int64_t> vecInstants = {nInstant};
    for (const auto& oChange : oFile.vecChanges) {
        for (const std::int64_t nAway : {-3600, -1, 0, 1, 3600})
            vecInstants.push_back(oChange.first + nAway);
    }
    for (const std::int64_t nSeconds : vecInstants) {
        const ZoneFile::Type& oType = TypeAt(oFile, nSeconds);
        ExpectEqual(oType.nOffset, pZone->TypeAt(nSeconds).nOffset, "the offset at an instant");
        ExpectEqual(oType.nSummerTime != 0, pZone->TypeAt(nSeconds).bSummerTime, "summer time");
        CheckInstant(*pZone, nSeconds);
        CheckReading(*pZone, nSeconds);
    }
}

void CheckDamaged(ZoneFile oFile)
{
    oFile.vecChanges.emplace_back(INT32_MAX, static_cast<std::uint8_t>(oFile.vecTypes.size()));
    Expect(KorReadZoneFile(oFile.Content()) == nullptr, "a change to a type that is none");
}

void CheckAny(const std::string& strContent, std::int64_t nInstant)
{
    const auto pZone = KorReadZoneFile(strContent);
    if (pZone == nullptr)
        return;
    CheckInstant(*pZone, nInstant);
    CheckReading(*pZone, nInstant);
    for (int i = 0; i < 20; ++i) { // from change to change
        const SKorZonePeriod oPeriod = pZone->PeriodAt(nInstant);
        CheckInstant(*pZone, oPeriod.nBegin);
        if (oPeriod.nEnd > CKorZoneData::MAX_SECONDS)
            return;
        nInstant = oPeriod.nEnd;
        CheckInstant(*pZone, nInstant);
        CheckReading(*pZone, nInstant);
    }
    Expect(KorReadZoneFile(strContent.substr(0, strContent.size() - 1)) == nullptr,
           "a file that is cut is refused");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const bool bMade = oInput.ConsumeBool();
    const std::int64_t nInstant =
        oInput.ConsumeIntegral<std::int64_t>() >> oInput.ConsumeIntegralInRange(6, 63);
    if (bMade) {
        const ZoneFile oFile = MadeOfParts(oInput);
        CheckMade(oFile, nInstant);
        CheckDamaged(oFile);
    } else {
        CheckAny(oInput.ConsumeRemainingBytesAsString(), nInstant);
    }
    return 0;
}
