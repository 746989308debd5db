// Zones as POSIX writes them in TZ: consistent at their changes, and as the C library has them.

#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/ZoneChecks.h"
#include "time/KorZoneRuleDetail.h"

#include <cstdlib>
#include <ctime>

namespace
{

constexpr std::int64_t DAY = 86400;
constexpr std::int32_t MAX_OFFSET = 25 * 3600 - 1; // 24:59:59

std::int64_t BeginOf(int nYear)
{
    std::tm oTime = {};
    oTime.tm_year = nYear - 1900;
    oTime.tm_mday = 1;
    return timegm(&oTime);
}

/// Whether summer comes first in the year as it does in the years beside it.
bool IsSteady(const CKorZoneRule& oRule, int nYear)
{
    const auto fnIsFirst = [&oRule](int n) { return oRule.SummerBegin(n) < oRule.SummerEnd(n); };
    return fnIsFirst(nYear - 1) == fnIsFirst(nYear) && fnIsFirst(nYear) == fnIsFirst(nYear + 1);
}

/// The C library looks at the changes of one year alone, and so errs near its ends.
void CompareWithCLibrary(const CKorZoneRule& oRule, const CKorZoneData& oZone, int nYear)
{
    const std::int64_t nFirst = BeginOf(nYear) + 10 * DAY;
    const std::int64_t nLast = BeginOf(nYear + 1) - 10 * DAY;
    const std::int64_t nBegin = oRule.SummerBegin(nYear);
    const std::int64_t nEnd = oRule.SummerEnd(nYear);
    if (std::min(nBegin, nEnd) < nFirst || std::max(nBegin, nEnd) > nLast || nBegin == nEnd ||
        !IsSteady(oRule, nYear))
        return;
    for (const std::int64_t nSeconds :
         {nFirst, nBegin - 1, nBegin, (nBegin + nEnd) / 2, nEnd - 1, nEnd, nLast}) {
        const std::time_t nTime = nSeconds;
        std::tm oLocal = {};
        localtime_r(&nTime, &oLocal);
        ExpectEqual<std::int64_t>(oLocal.tm_gmtoff, oZone.TypeAt(nSeconds).nOffset, "offset");
        ExpectEqual(oLocal.tm_isdst > 0, oZone.TypeAt(nSeconds).bSummerTime, "summer time");
        ExpectEqual(std::string(oLocal.tm_zone), oZone.TypeAt(nSeconds).strAbbreviation, "name");
    }
}

void CheckYear(const CKorZoneRule& oRule, const CKorZoneData& oZone, int nYear)
{
    for (const std::int64_t nChange : {oRule.SummerBegin(nYear), oRule.SummerEnd(nYear)}) {
        for (const std::int64_t nAway : {-DAY, std::int64_t{-1}, std::int64_t{0}, DAY}) {
            CheckInstant(oZone, nChange + nAway);
            CheckReading(oZone, nChange + nAway);
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const auto nYear = oInput.ConsumeIntegralInRange(1971, 2400);
    const std::int64_t nInstant =
        oInput.ConsumeIntegral<std::int64_t>() >> oInput.ConsumeIntegralInRange(6, 63);
    const std::string strText = oInput.ConsumeRemainingBytesAsString();
    CKorZoneRule oRule;
    if (!oRule.Parse(strText))
        return 0;
    const CKorZoneData oZone(oRule);
    Expect(std::abs(oRule.Standard().nOffset) <= MAX_OFFSET, "an offset stays within a day",
           strText);
    CheckInstant(oZone, nInstant);
    CheckReading(oZone, nInstant);
    if (!oRule.HasSummerTime())
        return 0;
    CheckYear(oRule, oZone, nYear);
    if (strText.find(',') != std::string::npos) {
        setenv("TZ", strText.c_str(), 1);
        tzset();
        CompareWithCLibrary(oRule, oZone, nYear);
    }
    return 0;
}
